// A pin: where a net meets an instance. A pin has a main pole, and where it is a clock pin, the auxiliary
// poles of its checks.
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

    // A pin of an instance; the name is one of its own among the instance's pins. FactoryFailed: "Null
    // instance", "Empty pin name", "Pin exists already".
    static Pin* create(Instance* instance, const std::string& name,
                       Direction direction = Direction::Receiver);
    // A pin of the module itself. FactoryFailed: "Null module", "Empty pin name".
    static Pin* create(Module* module, const std::string& name, Direction direction = Direction::Receiver);

    // The instance's name, "/", and the pin's; the pin's alone where it belongs to the module.
    std::string getName() const;
    Instance* getInstance() const { return instance_; }
    Direction getDirection() const { return direction_; }

    // Joins a net, and leaves the one before; null: joins none. InvalidRequest: "Net of another module".
    void connect(Net* net);
    Net* getNet() const { return net_; }
    bool isConnected() const { return net_ != nullptr; }

    Pole* getMainPole() const { return mainPole_; }
    Poles getAuxiliaryPoles() const {
        return Ruvex::MemoryCollection<Pole*>(auxiliaryPoles_.data(),
                                              auxiliaryPoles_.data() + auxiliaryPoles_.size());
    }

    std::string getClass() const override;
    std::string getAlias() const override { return getName(); }
    // Pins end with their module.
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
