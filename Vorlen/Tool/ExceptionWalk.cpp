#include "Vorlen/Tool/ExceptionWalk.h"

#include "Pelko/Analyzer.h"

#include <algorithm>

namespace Vorlen {

using detail::FanIn;

bool ExceptionWalk::run(const Pelko::Poles& ends, const Pelko::Poles& starts) {
    tool_.loopOpen();
    prepare(starts);
    try {
        for (Pelko::Pole* end : ends)
            walk(getSlot(end));
    } catch (...) {
        for (const Frame& frame : frames_)
            tool_.loopPush(fanIn_.getPole(frame.slot));
        throw;
    }
    tool_.loopClose();
    return found_;
}

void ExceptionWalk::unmark() {
    Pelko::analyzer->unmark();
    std::fill(states_.begin(), states_.end(), State{0});
}

void ExceptionWalk::forget() {
    unmark();
    tagged_.clear();
}

ExceptionWalk::Slot ExceptionWalk::getSlot(Pelko::Pole* pole) {
    const Slot slot = fanIn_.getSlot(pole);
    addStates();
    return slot;
}

// Adds states for new slots. A pole that was marked before the phase counts as visited until marks are
// cleared.
void ExceptionWalk::addStates() {
    while (states_.size() < fanIn_.getSlotCount()) {
        const Pelko::Pole* pole = fanIn_.getPole(static_cast<Slot>(states_.size()));
        states_.push_back(pole->isMarked() ? State{Visited} : State{0});
    }
}

void ExceptionWalk::prepare(const Pelko::Poles& starts) {
    found_ = false;
    pump_ = {};
    below_.clear();
    for (Pelko::Pole* pole : tool_.getLoopPoles()) {
        below_.push_back(getSlot(pole));
        set(below_.back(), OnStack);
    }
    for (Pelko::Pole* pole : starts)
        set(getSlot(pole), Start);
}

void ExceptionWalk::walk(Slot end) {
    enter(end, FanIn::none);
    while (!frames_.empty()) {
        Frame& top = frames_.back();
        if (top.next == top.end) {
            leave();
            continue;
        }
        const Place place = top.next++;
        const Slot source = fanIn_.getSource(place);
        if (source == FanIn::none)
            continue;
        if ((states_[source] & OnStack) != 0)
            ++loops_;
        else
            enter(source, place);
    }
}

void ExceptionWalk::enter(Slot slot, Place via) {
    const State state = states_[slot];
    if ((state & Visited) != 0) {
        if ((state & Hit) != 0) {
            addPath();
            tag(via);
        }
        pump();
        return;
    }
    set(slot, Visited | OnStack);
    if ((state & Start) != 0) {
        found_ = true;
        frames_.push_back({slot, via, 0, 0});
        addPath();
        return;
    }
    const FanIn::Fan fan = fanIn_.open(slot);
    addStates();
    frames_.push_back({slot, via, fan.begin, fan.end});
}

void ExceptionWalk::leave() {
    clear(frames_.back().slot, OnStack);
    frames_.pop_back();
    known_ = std::min(known_, frames_.size());
    pump();
}

// Called if the current path matches. Its lowest frames are known to match already.
void ExceptionWalk::addPath() {
    for (const Slot slot : below_)
        set(slot, Hit);
    below_.clear();
    for (; known_ < frames_.size(); ++known_) {
        set(frames_[known_].slot, Hit);
        tag(frames_[known_].via);
    }
}

void ExceptionWalk::tag(Place place) {
    if (place != FanIn::none)
        tagged_.push_back(place);
}

void ExceptionWalk::pump() {
    if (!pump_())
        return;
    fanIn_.renew();
    for (const Frame& frame : frames_)
        fanIn_.reread(frame.next, frame.end);
    addStates();
}

} // namespace Vorlen
