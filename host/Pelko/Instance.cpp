#include "Pelko/Instance.h"

#include "Pelko/Module.h"
#include "Ruvex/Refusal.h"

namespace Pelko {

Instance::~Instance() = default;
PLL::~PLL() = default;
WFG::~WFG() = default;

void Instance::preCreate(const Module* module, const std::string& name) {
    const auto require = [](bool condition, unsigned line, const char* message) {
        Ruvex::require<Ruvex::FactoryFailed>(condition, "Instance", "preCreate", line, message);
    };
    require(module, 1, "Null module");
    require(!name.empty(), 2, "Empty instance name");
    require(!module->getInstance(name), 3, "Instance exists already");
}

void Instance::postCreate() {
    module_->instances_.emplace_back(this);
    module_->instancesByName_.emplace(name_, this);
    Object::postCreate();
}

Instance* Instance::create(Module* module, const std::string& name) {
    preCreate(module, name);
    auto* instance = new Instance(module, name);
    instance->postCreate();
    return instance;
}

PLL* PLL::create(Module* module, const std::string& name) {
    preCreate(module, name);
    auto* pll = new PLL(module, name);
    module->plls_.push_back(pll);
    pll->postCreate();
    return pll;
}

WFG* WFG::create(Module* module, const std::string& name) {
    preCreate(module, name);
    auto* generator = new WFG(module, name);
    generator->postCreate();
    return generator;
}

Pin* Instance::getPin(const std::string& name) const {
    const auto found = pins_.find(name);
    return found == pins_.end() ? nullptr : found->second;
}

std::string Instance::getClass() const { return "Instance"; }

std::string PLL::getClass() const { return "PLL"; }

std::string WFG::getClass() const { return "WFG"; }

} // namespace Pelko
