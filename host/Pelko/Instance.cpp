#include "Pelko/Instance.h"

#include "Pelko/Module.h"
#include "Pelko/detail/Undo.h"
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

// If the module cannot add the instance, it is destroyed.
void Instance::postCreate() {
    std::unique_ptr<Instance> created(this);
    module_->instancesByName_.emplace(name_, this);
    detail::Undo forgetName([this] { module_->instancesByName_.erase(name_); });
    module_->instances_.push_back(std::move(created));
    forgetName.release();
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
    std::unique_ptr<PLL> created(new PLL(module, name));
    module->plls_.push_back(created.get());
    // Undone only if the PLL was not added to the module; it stays if a listener throws.
    detail::Undo forget([&] {
        if (!module->getInstance(name))
            module->plls_.pop_back();
    });
    PLL* pll = created.release();
    pll->postCreate();
    forget.release();
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
