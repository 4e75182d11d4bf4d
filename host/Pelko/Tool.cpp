#include "Pelko/Tool.h"

#include "Ruvex/Refusal.h"
#include "Ruvex/Utility.h"

#include <map>

namespace Pelko {

namespace {

std::map<std::string, Tool*>& registry() {
    static std::map<std::string, Tool*> tools;
    return tools;
}

} // namespace

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
