#include "Pelko/Pin.h"

#include "Pelko/Module.h"
#include "Pelko/Pole.h"
#include "Pelko/detail/Undo.h"
#include "Ruvex/Refusal.h"

namespace Pelko {

namespace {

void require(bool condition, unsigned line, const char* message) {
    Ruvex::require<Ruvex::FactoryFailed>(condition, "Pin", "create", line, message);
}

} // namespace

Pin::Pin(Module* module, Instance* instance, const std::string& name, Direction direction)
    : module_(module), instance_(instance), name_(name), direction_(direction) {}

Pin::~Pin() = default;

Pin* Pin::create(Instance* instance, const std::string& name, Direction direction) {
    require(instance, 1, "Null instance");
    require(!name.empty(), 2, "Empty pin name");
    require(!instance->getPin(name), 3, "Pin exists already");
    std::unique_ptr<Pin> created(new Pin(instance->getModule(), instance, name, direction));
    Pin* pin = created.get();
    instance->pins_.emplace(name, pin);
    detail::Undo forgetName([&] { instance->pins_.erase(name); });
    pin->module_->pins_.push_back(std::move(created));
    forgetName.release();
    pin->postCreate();
    return pin;
}

Pin* Pin::create(Module* module, const std::string& name, Direction direction) {
    require(module, 4, "Null module");
    require(!name.empty(), 2, "Empty pin name");
    std::unique_ptr<Pin> created(new Pin(module, nullptr, name, direction));
    Pin* pin = created.get();
    module->pins_.push_back(std::move(created));
    pin->postCreate();
    return pin;
}

std::string Pin::getName() const { return instance_ ? instance_->getName() + "/" + name_ : name_; }

void Pin::connect(Net* net) {
    Ruvex::require<Ruvex::InvalidRequest>(!net || net->getModule() == module_, "Pin", "connect", 5,
                                          "Net of another module");
    if (direction_ != Direction::Receiver) {
        net_ = net;
        return;
    }
    std::list<Pin*> receiver; // allocate first: nothing has changed if it fails
    if (net)
        receiver.push_back(this);
    if (net_)
        net_->receivers_.remove(this);
    net_ = net;
    if (net)
        net->receivers_.splice(net->receivers_.end(), receiver);
}

void Pin::addPole(Pole* pole) {
    if (!mainPole_)
        mainPole_ = pole;
}

void Pin::addAuxiliaryPole(Pole* pole) { auxiliaryPoles_.push_back(pole); }

void Pin::remove(const Pole* pole) {
    if (mainPole_ == pole)
        mainPole_ = nullptr;
    else
        std::erase(auxiliaryPoles_, pole);
}

std::string Pin::getClass() const { return "Pin"; }

} // namespace Pelko
