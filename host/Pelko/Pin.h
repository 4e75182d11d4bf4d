// A pin: the point at which a net connects to an instance. A pin has a main pole; a clock pin also has the
// auxiliary poles of its checks.
#pragma once

#include "Pelko/Edges.h"
#include "Pelko/Object.h"

#include <vector>

namespace Pelko {

class Instance;
class Module;
class Net;

class PELKO_API Pin : public Object {
public:
    enum class Direction { Receiver, Driver };

    // A pin of an instance. Its name is unique in the instance. FactoryFailed: "Null instance", "Empty pin
    // name", "Pin exists already".
    static Pin* create(Instance* instance, const std::string& name,
                       Direction direction = Direction::Receiver);
    // A pin of the module itself. FactoryFailed: "Null module", "Empty pin name".
    static Pin* create(Module* module, const std::string& name, Direction direction = Direction::Receiver);

    // The name of the instance, "/" and the pin's own name. A pin of the module has only its own name.
    std::string getName() const;
    // Null for a pin of the module.
    Instance* getInstance() const { return instance_; }
    Direction getDirection() const { return direction_; }

    // Connects the pin to a net, instead of the one before. Null disconnects it. InvalidRequest: "Net of
    // another module".
    void connect(Net* net);
    // Null if the pin is not connected.
    Net* getNet() const { return net_; }
    bool isConnected() const { return net_ != nullptr; }

    // The first pole that was created for the pin, or null.
    Pole* getMainPole() const { return mainPole_; }
    // The check poles that a clock pin governs, in order of creation.
    Poles getAuxiliaryPoles() const {
        return Ruvex::MemoryCollection<Pole*>(auxiliaryPoles_.data(),
                                              auxiliaryPoles_.data() + auxiliaryPoles_.size());
    }

    std::string getClass() const override;
    std::string getAlias() const override { return getName(); }
    // Pins are destroyed only with their module.
    bool isDestroyable() const override { return false; }

    ~Pin() override;

private:
    friend class Instance;
    friend class Module;
    friend class Pole;

    Pin(Module* module, Instance* instance, const std::string& name, Direction direction);
    void addPole(Pole* pole);
    void addAuxiliaryPole(Pole* pole);
    void remove(const Pole* pole);

    Module* module_;
    Instance* instance_;
    Net* net_ = nullptr;
    std::string name_;
    Direction direction_;
    Pole* mainPole_ = nullptr;
    std::vector<Pole*> auxiliaryPoles_;
};

} // namespace Pelko
