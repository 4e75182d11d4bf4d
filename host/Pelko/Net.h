// A net: connects pins of a module.
#pragma once

#include "Pelko/Object.h"
#include "Ruvex/Collections.h"

#include <list>

namespace Pelko {

class Module;
class Pin;

class PELKO_API Net : public Object {
public:
    // A net of the module, without pins. FactoryFailed: "Null module", "Empty net name", "Net exists
    // already".
    static Net* create(Module* module, const std::string& name);

    const std::string& getName() const { return name_; }
    // The receiving pins, in the order in which they were connected.
    Ruvex::Collection<Pin*> getReceivers() const { return Ruvex::ListCollection<Pin*>(receivers_); }
    Module* getModule() const { return module_; }

    std::string getClass() const override;
    std::string getAlias() const override { return name_; }
    // Nets are destroyed only with their module.
    bool isDestroyable() const override { return false; }

    ~Net() override;

private:
    friend class Pin;

    Net(Module* module, const std::string& name) : module_(module), name_(name) {}

    Module* module_;
    std::string name_;
    std::list<Pin*> receivers_;
};

} // namespace Pelko
