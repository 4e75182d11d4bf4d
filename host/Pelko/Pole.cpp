#include "Pelko/Pole.h"

#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Issue.h"
#include "Pelko/Net.h"
#include "Pelko/Pin.h"
#include "Pelko/detail/Undo.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/StandardSlot.h"

#include <algorithm>
#include <array>
#include <memory>

namespace Pelko {

namespace {

detail::Pool<sizeof(Pole), alignof(Pole)> pool;

void require(bool condition, const char* function, unsigned line, const char* message) {
    Ruvex::require<Ruvex::FactoryFailed>(condition, "Pole", function, line, message);
}

} // namespace

void* Pole::operator new(std::size_t) { return pool.take(); }

void Pole::operator delete(void* place) { pool.release(place); }

Pole::Pole(Cell* owner, Pin* pin) : cell_(owner), pin_(pin) {}

// Everything that a listener may read is set before `postCreate()`.
Pole* Pole::make(Cell* owner, Pin* pin, const std::string& name, unsigned kinds, ClockMode::Code mode) {
    std::unique_ptr<Pole> created(new Pole(owner, pin));
    created->kinds_ = static_cast<std::uint16_t>(kinds);
    created->clockMode_ = mode;
    owner->add(created.get(), name);
    Pole* pole = created.release();
    if (pin)
        pin->addPole(pole);
    pole->postCreate();
    return pole;
}

Pole* Pole::create(Cell* owner, const std::string& name) {
    require(owner, "create", 1, "Null cell");
    return make(owner, nullptr, name, 0, ClockMode::None);
}

Pole* Pole::create(Cell* owner, Pin* pin, const std::string& name) {
    require(owner, "create", 1, "Null cell");
    require(pin, "create", 2, "Null pin");
    return make(owner, pin, name, 0, ClockMode::None);
}

Pole* Pole::createInput(Cell* owner, const std::string& name) {
    require(owner, "createInput", 1, "Null cell");
    return make(owner, nullptr, name, Input | Initial, ClockMode::None);
}

Pole* Pole::createOutput(Cell* owner, const std::string& name) {
    require(owner, "createOutput", 1, "Null cell");
    return make(owner, nullptr, name, Output | Terminal, ClockMode::None);
}

Pole* Pole::createClockSource(Cell* owner, const std::string& name) {
    require(owner, "createClockSource", 1, "Null cell");
    return make(owner, nullptr, name, ClockSource | Initial, ClockMode::None);
}

Pole* Pole::createClock(Cell* owner, Pin* pin, const ClockMode& mode, const std::string& name) {
    require(owner, "createClock", 1, "Null cell");
    require(pin, "createClock", 2, "Null pin");
    require(mode.getCode() != ClockMode::None, "createClock", 3, "No clock mode");
    return make(owner, pin, name, Clock | Initial, mode.getCode());
}

Pole* Pole::createCheck(Pole* clockPole, const std::string& name) {
    require(clockPole, "createCheck", 4, "Null clock pole");
    require(clockPole->isClock(), "createCheck", 5, "Not a clock pole");
    require(clockPole->getPin(), "createCheck", 6, "Clock pole without a pin");
    std::unique_ptr<Pole> created(new Pole(clockPole->getCell(), clockPole->getPin()));
    created->kinds_ = SetupCheck | HoldCheck | Terminal;
    created->pin_->addAuxiliaryPole(created.get());
    detail::Undo leavePin([&] { created->pin_->remove(created.get()); });
    created->cell_->add(created.get(), name);
    leavePin.release();
    Pole* pole = created.release();
    pole->setClockPole(clockPole);
    pole->setMainPole(clockPole);
    pole->postCreate();
    return pole;
}

// A pole that refers to itself does not count as a reference, so that it can be destroyed.
void Pole::replace(Pole*& field, Pole* value, const Pole* self) {
    if (field != self)
        Reference::remove(field);
    field = value;
    if (field != self)
        Reference::add(field);
}

void Pole::setClockPole(Pole* pole) { replace(clockPole_, pole, this); }

void Pole::setMainPole(Pole* pole) { replace(mainPole_, pole, this); }

Pole* Pole::getMainPole() const {
    if (mainPole_)
        return mainPole_;
    if (pin_ && pin_->getMainPole())
        return pin_->getMainPole();
    return const_cast<Pole*>(this);
}

Edges Pole::viewOf(const detail::Fan& fan) {
    return Ruvex::MemoryCollection<Edge*>(fan.begin(), fan.end(), fan.getCount());
}

Edge* Pole::getIncomingEdge(const Pole* source) const {
    if (!source)
        return nullptr;
    if (incoming_.getCount() <= source->outgoing_.getCount()) {
        for (Edge* edge : incoming_)
            if (edge && edge->getSource() == source)
                return edge;
    } else {
        for (Edge* edge : source->outgoing_)
            if (edge && edge->getTarget() == this)
                return edge;
    }
    return nullptr;
}

void Pole::mark() { markEpoch_ = Analyzer::_epoch; }

bool Pole::isMarked() const { return markEpoch_ == Analyzer::_epoch; }

void Pole::insulate() {
    for (Edge* edge : getIncomingEdges())
        edge->disactivate();
    for (Edge* edge : getOutgoingEdges())
        edge->disactivate();
}

std::string Pole::getName() const {
    if (const std::string* name = cell_->findName(this))
        return *name;
    return pin_ ? pin_->getName() : "pole#" + std::to_string(index_);
}

std::string Pole::getNetUserName() const {
    return pin_ && pin_->getNet() ? pin_->getNet()->getName() : getName();
}

std::string Pole::getClass() const { return "Pole"; }

std::string Pole::getAlias() const { return getName(); }

bool Pole::isDestroyable() const {
    if (references_ != 0)
        return false;
    const auto isFree = [](Edge* edge) { return !edge || edge->isDestroyable(); };
    return std::all_of(incoming_.begin(), incoming_.end(), isFree) &&
           std::all_of(outgoing_.begin(), outgoing_.end(), isFree);
}

void Pole::preDestroy() {
    notifyDestroyed(*this);
    for (Edge* edge : getIncomingEdges())
        edge->destroy();
    for (Edge* edge : getOutgoingEdges())
        edge->destroy();
    setClockPole(nullptr);
    setMainPole(nullptr);
    if (pin_)
        pin_->remove(this);
    cell_->remove(this);
}

Ruvex::Record* Pole::_getRecord() const {
    std::unique_ptr<Ruvex::Record> record(Object::_getRecord());
    if (!record)
        return nullptr;
    static constexpr std::array<std::pair<Kind, const char*>, 9> kindNames{
        {{Input, "input"},
         {Output, "output"},
         {Clock, "clock"},
         {ClockSource, "clock source"},
         {Initial, "initial"},
         {Terminal, "terminal"},
         {SetupCheck, "setup check"},
         {HoldCheck, "hold check"},
         {CaptureInverted, "capture inverted"}}};
    record->addHeader("Pole");
    for (const auto& [kind, name] : kindNames)
        if (has(kind))
            record->add(name, Ruvex::NullSlot::create());
    record->add("ClockMode", getClockMode()._getSlot());
    record->add("ClockPole", clockPole_ ? clockPole_->_getSlot() : nullptr);
    record->add("Incoming", new Ruvex::StandardSlot<unsigned long>(incoming_.getCount()));
    record->add("Outgoing", new Ruvex::StandardSlot<unsigned long>(outgoing_.getCount()));
    record->add("OpeningPseudoMask", getOpeningPseudoMask()._getSlot());
    record->add("ClosingPseudoMask", getClosingPseudoMask()._getSlot());
    return record.release();
}

void Pole::check(Issue& issue) const {
    if (isClock() && clockMode_ == ClockMode::None)
        issue.add(this, "clock pole without a clock mode");
    if (isCheck() && !clockPole_)
        issue.add(this, "check pole without a clock pole");
    if (isCheck() && !isTerminal())
        issue.add(this, "check pole that is not terminal");
    if (isOutput() && !isTerminal())
        issue.add(this, "output port that is not terminal");
    if (isInput() && !isInitial())
        issue.add(this, "input port that is not initial");
    if (isClock() && !isInitial())
        issue.add(this, "clock pole that is not initial");
}

} // namespace Pelko
