#include "Pelko/Module.h"

namespace Pelko {

Module::Module(Cell* owner, const std::string& name) : cell_(owner), name_(name) {}

Module::~Module() = default;

void Module::preDestroy() {
    notifyDestroyed(*this);
    for (const auto& pin : pins_)
        notifyDestroyed(*pin);
    for (const auto& instance : instances_)
        notifyDestroyed(*instance);
    for (const auto& net : nets_)
        notifyDestroyed(*net);
}

Instance* Module::getInstance(const std::string& name) const {
    const auto found = instancesByName_.find(name);
    return found == instancesByName_.end() ? nullptr : found->second;
}

Net* Module::getNet(const std::string& name) const {
    const auto found = netsByName_.find(name);
    return found == netsByName_.end() ? nullptr : found->second;
}

std::string Module::getClass() const { return "Module"; }

} // namespace Pelko
