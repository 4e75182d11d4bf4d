// Clocks in units: what the constraints state, how far each clock reaches, and what generated clocks take
// from their masters.
#include "model/Clocks.h"

#include "model/Insertion.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <unordered_map>

namespace Model {

namespace {

constexpr int nanosecond = -9;
// Leaves room for sums in the engine's 32 bits.
constexpr Time largestTime = (Time{1} << 30) - 1;

Latency latencyOf(const Design::EarlyLate& latency, int scale, const Base::Place& place) {
    return {latency.early ? toUnits(*latency.early, scale, place) : 0,
            latency.late ? toUnits(*latency.late, scale, place) : 0};
}

// "10ps" for -11.
std::string unitText(int exponent) {
    constexpr std::array names = {"fs", "ps", "ns", "us", "ms", "s"};
    constexpr int least = -15; // of the first name
    constexpr std::array factors = {"1", "10", "100"};
    const auto above = static_cast<std::size_t>(exponent - least);
    return std::string(factors[above % factors.size()]) + names[above / factors.size()];
}

// Returns why the edges of a clock are not a waveform when they are rounded to units; empty if they are one.
std::string faultOf(const Clock& clock, int scale) {
    const std::string unit = unitText(scale);
    if (clock.period <= 0)
        return "the period of '" + clock.name + "' rounds to 0 units of " + unit;
    if (clock.high() <= 0 || clock.high() >= clock.period)
        return "the rise and the fall of '" + clock.name + "' round to the same unit of " + unit;
    return "";
}

} // namespace

Time toUnits(const Base::Decimal& nanoseconds, int scale, const Base::Place& place) {
    const std::optional<std::int64_t> units = nanoseconds.scaled(nanosecond - scale);
    if (!units || *units > largestTime || *units < -largestTime)
        throw Base::BadInput(place, "the time " + nanoseconds.toString() +
                                        " ns does not fit: expected at most " + std::to_string(largestTime) +
                                        " units of 1e" + std::to_string(scale) + " s");
    return *units;
}

Latency Clock::atPorts(bool withSource, bool withNetwork) const {
    Latency at;
    if (withSource) {
        at = source;
        if (!insertion.empty()) {
            at.early += std::ranges::min(insertion, {}, &Latency::early).early;
            at.late += std::ranges::max(insertion, {}, &Latency::late).late;
        }
    }
    if (withNetwork && !propagated) {
        at.early += network.early;
        at.late += network.late;
    }
    return at;
}

Clocks::Clocks(const Design::RoutedDesign& design, const Network& network,
               const Design::Constraints& constraints, const ClockOptions& options,
               Base::Diagnostics& diagnostics)
    : design_(design), network_(network), scale_(options.scale), diagnostics_(diagnostics) {
    for (const Design::Clock& clock : constraints.clocks)
        take(clock, constraints, options);
    Base::IndexVector<NodeId, ClockId> seenBy(network.size());
    for (const ClockId number : clocks_.ids())
        if (!clocks_[number].removed)
            flood(number, seenBy);
    resolveGenerated(constraints);
    const auto put = [&](Uncertainty& own, const Design::SetupHold& value, const Design::Origin& origin) {
        for (const Base::Side side : Base::bothSides)
            if (value[side])
                own[side] = units(*value[side], constraints.place(origin));
    };
    for (const Design::PinUncertainty& pin : constraints.pinUncertainties)
        put(pins_[pin.pin], pin.value, pin.origin);
    pairs_.reserve(constraints.pairUncertainties.size());
    for (const Design::ClockPairUncertainty& pair : constraints.pairUncertainties)
        put(pairs_[Base::pairKey(pair.from, pair.to)], pair.value, pair.origin);
}

Time Clocks::units(const Base::Decimal& time, const Base::Place& place) const {
    return toUnits(time, scale_, place);
}

void Clocks::take(const Design::Clock& from, const Design::Constraints& constraints,
                  const ClockOptions& options) {
    Clock clock;
    clock.name = from.name;
    clock.place = constraints.place(from.origin);
    clock.removed = from.removed;
    clock.period = units(from.period, clock.place);
    clock.rise = units(from.rise, clock.place);
    clock.fall = units(from.fall, clock.place);
    if (!from.generated && !from.removed)
        checkShape(clock, from);
    clock.propagated = from.propagated.value_or(options.propagated);
    for (const PinId pin : from.targets)
        clock.targets.push_back(network_.sourceOf(pin));
    clock.insertion.resize(clock.targets.size());
    clock.source = latencyOf(from.sourceLatency, scale_, clock.place);
    clock.network = latencyOf(from.networkLatency, scale_, clock.place);
    for (const Base::Side side : Base::bothSides)
        if (from.uncertainty[side])
            clock.uncertainty[side] = units(*from.uncertainty[side], clock.place);
    clocks_.push_back(std::move(clock));
}

// Clocks without constraints have no period, and no edges.
void Clocks::checkShape(const Clock& clock, const Design::Clock& from) const {
    const std::string fault = faultOf(clock, scale_);
    if (fault.empty() || from.period.isZero())
        return;
    const std::string given = from.timeExponent == 0
                                  ? "the file's times are in ns, since it does not say set_units -time"
                                  : "the file's times are in " + unitText(nanosecond + from.timeExponent) +
                                        ", as its set_units -time says";
    throw Base::BadInput(clock.place, "create_clock: " + fault + " (" + from.period.toString() +
                                          " ns): " + given +
                                          "; expected another unit there, a longer period, or a finer "
                                          "--resolution");
}

void Clocks::flood(ClockId number, Base::IndexVector<NodeId, ClockId>& seenBy) {
    Clock& clock = clocks_[number];
    const auto reach = [&](NodeId node) {
        if (network_.isConstant(node) || seenBy[node] == number)
            return;
        seenBy[node] = number;
        clock.reached.push_back(node);
    };
    for (const NodeId target : clock.targets)
        reach(target);
    for (std::size_t next = 0; next < clock.reached.size(); ++next)
        for (const ArcId out : network_.out(clock.reached[next]))
            if (const Arc& arc = network_.arcs()[out]; arc.kind == ArcKind::through)
                reach(arc.to);
}

// --- Generated clocks ---

Clocks::Reaching Clocks::clocksAtSources(const Design::Constraints& constraints) const {
    Reaching reaching;
    for (const ClockId number : clocks_.ids()) {
        const auto& generated = constraints.clocks[number].generated;
        if (clocks_[number].removed || !generated || generated->master != Base::none)
            continue;
        const auto add = [&](NodeId node) { reaching[node]; };
        network_.eachCopy(network_.sinkOf(generated->source), add);
        network_.eachCopy(network_.sourceOf(generated->source), add);
    }
    for (const ClockId number : clocks_.ids())
        if (!reaching.empty() && !clocks_[number].removed)
            for (const NodeId node : clocks_[number].reached)
                if (const auto known = reaching.find(node); known != reaching.end())
                    known->second.push_back(number);
    return reaching;
}

// The clock that is named, or the one that reaches the source pin.
ClockId Clocks::masterOf(ClockId number, const Design::Constraints& constraints,
                         const Reaching& reaching) const {
    const Design::GeneratedClock& generated = *constraints.clocks[number].generated;
    if (generated.master != Base::none)
        return generated.master;
    std::vector<ClockId> masters;
    const auto add = [&](NodeId node) {
        masters.insert(masters.end(), reaching.at(node).begin(), reaching.at(node).end());
    };
    network_.eachCopy(network_.sinkOf(generated.source), add);
    network_.eachCopy(network_.sourceOf(generated.source), add);
    std::ranges::sort(masters);
    masters.erase(std::ranges::unique(masters).begin(), masters.end());
    std::erase(masters, number);
    if (masters.empty())
        throw Base::BadInput(clocks_[number].place, "create_generated_clock: no clock reaches the source '" +
                                                        design_.pinName(generated.source) + "' of '" +
                                                        clocks_[number].name + "'; expected a clock there");
    if (masters.size() > 1)
        diagnostics_.warning(clocks_[number].place,
                             "create_generated_clock: several clocks reach the source '" +
                                 design_.pinName(generated.source) + "' of '" + clocks_[number].name +
                                 "': '" + clocks_[masters[0]].name + "' is taken; name one by -master_clock");
    return masters.front();
}

// Masters before what is made of them.
void Clocks::resolveGenerated(const Design::Constraints& constraints) {
    const Reaching reaching = clocksAtSources(constraints);
    std::vector<ClockId> waiting;
    Base::IndexVector<ClockId, bool> done(clocks_.size(), true);
    for (const ClockId number : clocks_.ids())
        if (!clocks_[number].removed && constraints.clocks[number].generated) {
            clocks_[number].master = masterOf(number, constraints, reaching);
            waiting.push_back(number);
            done[number] = false;
        }
    while (!waiting.empty()) {
        const std::size_t before = waiting.size();
        std::erase_if(waiting, [&](ClockId number) {
            Clock& clock = clocks_[number];
            const Clock& master = clocks_[clock.master];
            if (!done[clock.master])
                return false;
            const Design::Clock& stated = constraints.clocks[number];
            shapeGenerated(clock, master, *stated.generated, clock.place);
            if (clock.propagated && !stated.sourceLatency.early && !stated.sourceLatency.late)
                insert(clock, master, stated.generated->source);
            done[number] = true;
            return true;
        });
        if (waiting.size() == before)
            throw Base::BadInput(clocks_[waiting.front()].place, "create_generated_clock: '" +
                                                                     clocks_[waiting.front()].name +
                                                                     "' is its own master");
    }
}

void Clocks::shapeGenerated(Clock& clock, const Clock& master, const Design::GeneratedClock& generated,
                            Base::Place place) {
    using enum Design::GeneratedClock::Kind;
    const auto masterEdge = [&](int number) { // counted from 1, rises and falls in turn
        return (number % 2 == 1 ? master.rise : master.fall) + (number - 1) / 2 * master.period;
    };
    const auto requireFit = [&](Time time, const char* what) {
        if (std::abs(time) > largestTime)
            throw Base::BadInput(place, "the " + std::string(what) + " of '" + clock.name +
                                            "' does not fit the engine's integers");
    };
    const Time factor = generated.factor;
    if (generated.kind == edges) {
        Time at[3];
        for (std::size_t edge = 0; edge < 3; ++edge) {
            at[edge] = masterEdge(generated.edges[edge]);
            if (!generated.edgeShifts.empty())
                at[edge] += units(generated.edgeShifts[edge], place);
        }
        clock.rise = at[0];
        clock.fall = at[1];
        clock.period = at[2] - at[0];
        requireFit(clock.period, "period");
    } else {
        const bool divide = generated.kind == Design::GeneratedClock::Kind::divide;
        clock.period = divide ? master.period * factor : nearestOf(master.period, factor);
        requireFit(clock.period, "period");
        clock.rise = master.rise;
        if (divide && factor > 1)
            clock.fall =
                clock.rise + (factor % 2 == 0 ? factor / 2 * master.period : nearestOf(clock.period, 2));
        else
            clock.fall = clock.rise + nearestOf(master.high(), factor);
        if (!divide && clock.period * factor != master.period)
            diagnostics_.note(place, "the period of '" + clock.name + "' is rounded to a whole unit");
        if (generated.dutyCycle)
            if (const std::optional<std::int64_t> duty = generated.dutyCycle->scaled(6))
                clock.fall = clock.rise + nearestOf(clock.period * *duty, 100'000'000);
    }
    if (generated.invert) {
        const Time rise = clock.fall;
        clock.fall = clock.rise + clock.period;
        clock.rise = rise;
    }
    Time shift = units(generated.offset, place);
    if (const std::optional<std::int64_t> phase = generated.phase.scaled(6))
        shift += nearestOf(clock.period * *phase, 360'000'000);
    clock.rise += shift;
    clock.fall += shift;
    requireFit(clock.rise, "waveform");
    requireFit(clock.fall, "waveform");
    const std::string fault = faultOf(clock, scale_);
    if (!fault.empty() && generated.kind == edges)
        throw Base::BadInput(place, "create_generated_clock: '" + clock.name +
                                        "' gets no waveform: expected a rise and a fall within one period");
    if (!fault.empty())
        throw Base::BadInput(place, "create_generated_clock: " + fault + ": expected a finer --resolution");
}

// From the master's targets through the source pin, if that is on a way to the target.
void Clocks::insert(Clock& clock, const Clock& master, PinId source) const {
    clock.source = master.source;
    Insertion::Arrivals from;
    for (std::size_t target = 0; target < master.targets.size(); ++target)
        from.emplace_back(master.targets[target], master.insertion[target]);
    Insertion::Arrivals atSource;
    for (const NodeId side : {network_.sinkOf(source), network_.sourceOf(source)})
        network_.eachCopy(side, [&](NodeId node) {
            if (const std::optional<Latency> arrival = Insertion(network_, from, node).find())
                atSource.emplace_back(node, *arrival);
        });
    for (std::size_t target = 0; target < clock.targets.size(); ++target) {
        std::optional<Latency> insertion = Insertion(network_, atSource, clock.targets[target]).find();
        if (!insertion)
            insertion = Insertion(network_, from, clock.targets[target]).find();
        if (insertion)
            clock.insertion[target] = *insertion;
        else
            diagnostics_.warning(clock.place, "nothing leads from '" + master.name + "' to '" +
                                                  network_.nameOf(clock.targets[target]) + "': '" +
                                                  clock.name + "' has no insertion delay there");
    }
}

Time Clocks::uncertainty(ClockId launch, ClockId capture, PinId pin, Base::Side side) const {
    if (const auto found = pairs_.find(Base::pairKey(launch, capture)); found != pairs_.end())
        if (const std::optional<Time>& own = found->second[side])
            return *own;
    if (const auto found = pins_.find(pin); found != pins_.end())
        if (const std::optional<Time>& own = found->second[side])
            return *own;
    return clocks_[capture].uncertainty[side];
}

} // namespace Model
