#include "Pelko/Tool.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Application.h"
#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Model.h"
#include "Pelko/Subdomain.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/Utility.h"

#include <map>

namespace Pelko {

namespace {

std::map<std::string, Tool*>& registry() {
    static std::map<std::string, Tool*> tools;
    return tools;
}

const Tool::Run* innermost = nullptr;
unsigned yields = 0;
const Object* released = nullptr;

// The run destroys a domain together with its subdomains.
bool isReleased(const Object* object) {
    const auto* subdomain = dynamic_cast<const Subdomain*>(object);
    return object == released || (subdomain && subdomain->getDomain() == released);
}

} // namespace

Tool::Run::Run(const Tool* tool) noexcept : tool_(tool), outer_(innermost) { innermost = this; }

Tool::Run::~Run() {
    innermost = outer_;
    if (!innermost)
        Model::endPostponed();
}

bool Tool::Run::isGoingOn(const Tool* tool) noexcept {
    for (const Run* run = innermost; run; run = run->outer_)
        if (!tool || run->tool_ == tool)
            return true;
    return false;
}

bool Tool::Run::keeps(const Object* object) {
    if (!innermost)
        return false;
    if (dynamic_cast<const Pole*>(object) || dynamic_cast<const Edge*>(object))
        return yields == 0;
    return (dynamic_cast<const Analyzer*>(object) || dynamic_cast<const Application*>(object) ||
            dynamic_cast<const Cell*>(object) || dynamic_cast<const Domain*>(object) ||
            dynamic_cast<const Subdomain*>(object) || dynamic_cast<const CPath*>(object)) &&
           !isReleased(object);
}

Tool::Run::Yield::Yield() noexcept { ++yields; }

Tool::Run::Yield::~Yield() { --yields; }

Tool::Run::Release::Release(const Object* object) noexcept : outer_(released) { released = object; }

Tool::Run::Release::~Release() { released = outer_; }

Tool::~Tool() = default;

void Tool::preCreate(const std::string& name) {
    Ruvex::require<Ruvex::FactoryFailed>(!name.empty(), "Tool", "preCreate", 1, "Empty tool name");
    Ruvex::require<Ruvex::FactoryFailed>(!getTool(name), "Tool", "preCreate", 2, "Tool exists already");
}

void Tool::postCreate(const std::string& name) {
    Ruvex::require<Ruvex::InvalidRequest>(name == name_, "Tool", "postCreate", 3, "Tool of another name");
    registry().emplace(name, this);
}

void Tool::preDestroy() { registry().erase(name_); }

void Tool::destroy() {
    Ruvex::require<Ruvex::InvalidRequest>(!Run::isGoingOn(this), "Tool", "destroy", 4, "Tool is running");
    preDestroy();
    delete this;
}

Tool* Tool::getTool(const std::string& name) {
    const auto found = registry().find(name);
    return found == registry().end() ? nullptr : found->second;
}

std::string Tool::_getLabel() const { return "Tool " + name_; }

Ruvex::Slot* Tool::_getSlot() const { return new Ruvex::ObjectSlot<Tool>(this); }

Ruvex::Record* Tool::_getRecord() const { return _hasRecord() ? new Ruvex::Record(_getLabel()) : nullptr; }

bool Tool::_hasRecord() const { return Ruvex::isDebug(); }

std::string Tool::getAlias() const { return name_; }

} // namespace Pelko
