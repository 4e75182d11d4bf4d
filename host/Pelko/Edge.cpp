#include "Pelko/Edge.h"

#include "Pelko/Cell.h"
#include "Pelko/detail/Undo.h"
#include "Ruvex/Refusal.h"
#include "Ruvex/StandardSlot.h"

#include <memory>

namespace Pelko {

namespace {

constexpr std::size_t line = 64; // of the cache
static_assert(sizeof(Edge) == line);
detail::Pool<sizeof(Edge), line> pool;

} // namespace

bool Edge::_hasMaximumSlack = false;

void* Edge::operator new(std::size_t) { return pool.take(); }

void Edge::operator delete(void* place) { pool.release(place); }

Edge::Edge(Pole* source, Pole* target, const Delay& minimum, const Delay& maximum)
    : source_(source), target_(target), minDelay_(int(minimum)), maxDelay_(int(maximum)),
      sourceIndex_(source->getIndex()) {}

void Edge::preCreate(const Pole* source, const Pole* target) {
    const auto require = [](bool condition, unsigned line, const char* message) {
        Ruvex::require<Ruvex::FactoryFailed>(condition, "Edge", "preCreate", line, message);
    };
    require(source, 1, "Null source");
    require(target, 2, "Null target");
    require(source != target, 3, "Edge from a pole to itself");
    require(source->getCell() == target->getCell(), 4, "Poles of two cells");
    require(!target->getIncomingEdge(source), 5, "Edge exists already");
}

Edge* Edge::create(Pole* source, Pole* target, const Delay& minimum, const Delay& maximum) {
    preCreate(source, target);
    std::unique_ptr<Edge> created(new Edge(source, target, minimum, maximum));
    created->link();
    Edge* edge = created.release();
    edge->postCreate();
    return edge;
}

void Edge::link() {
    const std::uint32_t sourcePosition = source_->outgoing_.push(
        this, [](Edge* edge, std::uint32_t position) { edge->getDetails().sourcePosition = position; });
    detail::Undo leaveSource([&] { source_->outgoing_.remove(sourcePosition); });
    const std::uint32_t targetPosition = target_->incoming_.push(
        this, [](Edge* edge, std::uint32_t position) { edge->getDetails().targetPosition = position; });
    detail::Undo leaveTarget([&] { target_->incoming_.remove(targetPosition); });
    index_ = source_->getCell()->add(this);
    leaveSource.release();
    leaveTarget.release();
    getDetails().sourcePosition = sourcePosition;
    getDetails().targetPosition = targetPosition;
}

void Edge::unlink() {
    source_->outgoing_.remove(getDetails().sourcePosition);
    target_->incoming_.remove(getDetails().targetPosition);
    source_->getCell()->edges_.remove(index_);
}

detail::EdgeDetails& Edge::getDetails() const { return source_->getCell()->edgeDetails_[index_]; }

void Edge::preDestroy() {
    notifyDestroyed(*this);
    unlink();
}

bool Edge::isDestroyable() const { return getDetails().references == 0; }

unsigned long Edge::getWeight() const { return getDetails().weight; }

void Edge::setWeight(unsigned long weight) { getDetails().weight = weight; }

void Edge::setMinDutyCycle(unsigned long percentage) {
    Ruvex::require<Ruvex::InvalidRequest>(percentage <= 100, "Edge", "setMinDutyCycle", 6,
                                          "Duty cycle above 100");
    minDutyCycle_ = static_cast<std::uint8_t>(percentage);
}

void Edge::clearResults() {
    maskBits_ = 0;
    setWeight(0);
    slack_ = Delay::undefinedValue;
    minDutyCycle_ = 100;
}

std::string Edge::getClass() const { return "Edge"; }

std::string Edge::getAlias() const { return source_->getName() + " -> " + target_->getName(); }

Ruvex::Record* Edge::_getRecord() const {
    std::unique_ptr<Ruvex::Record> record(Object::_getRecord());
    if (!record)
        return nullptr;
    record->addHeader("Edge");
    record->add("Source", source_->_getSlot());
    record->add("Target", target_->_getSlot());
    record->add("MinDelay", getMinDelay()._getSlot());
    record->add("MaxDelay", getMaxDelay()._getSlot());
    record->add("Active", new Ruvex::StandardSlot<unsigned long>(active_));
    record->add("PseudoMask", getPseudoMask()._getSlot());
    record->add("Slack", getSlack()._getSlot());
    record->add("Weight", new Ruvex::StandardSlot<unsigned long>(getWeight()));
    record->add("MinDutyCycle", new Ruvex::StandardSlot<unsigned long>(minDutyCycle_));
    return record.release();
}

} // namespace Pelko
