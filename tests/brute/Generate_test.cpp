// The generator: the same design for the same seed, no cycles, few paths, and every feature occurs somewhere.
#include "Analyse.h"
#include "Generate.h"
#include "Write.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

namespace Brute {

namespace {

constexpr int seeds = 500;

Shape shapeOf(int seed) {
    Shape shape;
    shape.openOutputs = seed % 2 == 0;
    shape.exceptions = seed % 3 == 0   ? ExceptionMode::without
                       : seed % 3 == 1 ? ExceptionMode::single
                                       : ExceptionMode::overlapping;
    return shape;
}

Design designOf(int seed) { return generate(static_cast<std::uint64_t>(seed), shapeOf(seed)); }

TEST(Generate, TheSameSeedGivesTheSameFiles) {
    for (int seed = 0; seed < 50; ++seed) {
        const Design one = designOf(seed), two = designOf(seed);
        EXPECT_EQ(writeSdf(one), writeSdf(two)) << seed;
        EXPECT_EQ(writeSdc(one), writeSdc(two)) << seed;
        EXPECT_EQ(writeJson(one), writeJson(two)) << seed;
        EXPECT_EQ(writeVerilog(one), writeVerilog(two)) << seed;
    }
    EXPECT_NE(writeSdf(designOf(1)), writeSdf(designOf(2)));
}

// Whether the pins can be ordered so that every arc goes forward.
bool isAcyclic(const Design& d) {
    std::vector<int> incoming(d.pins.size());
    for (const Arc& arc : d.arcs)
        if (arc.kind != Arc::Kind::reset)
            ++incoming[static_cast<std::size_t>(arc.to)];
    std::vector<int> ready;
    for (int pin = 0; pin < static_cast<int>(d.pins.size()); ++pin)
        if (incoming[static_cast<std::size_t>(pin)] == 0)
            ready.push_back(pin);
    std::size_t done = 0;
    for (; done < ready.size(); ++done)
        for (const Arc& arc : d.arcs)
            if (arc.kind != Arc::Kind::reset && arc.from == ready[done] &&
                --incoming[static_cast<std::size_t>(arc.to)] == 0)
                ready.push_back(arc.to);
    return done == d.pins.size();
}

TEST(Generate, NoCyclesAndFewPaths) {
    for (int seed = 0; seed < seeds; ++seed) {
        const Design d = designOf(seed);
        EXPECT_TRUE(isAcyclic(d)) << seed;
        const Clocks clocks = resolveClocks(d, {});
        EXPECT_LE(listPaths(d, clocks, {}).size(), static_cast<std::size_t>(shapeOf(seed).maximumPaths) * 2)
            << seed;
        EXPECT_LE(clocks.live.size(), static_cast<std::size_t>(shapeOf(seed).maximumClocks)) << seed;
        EXPECT_LE(d.exceptions.size(), static_cast<std::size_t>(shapeOf(seed).maximumExceptions)) << seed;
    }
}

TEST(Generate, LoopsWhereTheyAreAskedForAndFewPaths) {
    constexpr int share = 30;
    int withLoops = 0;
    for (int seed = 0; seed < seeds; ++seed) {
        Shape shape = shapeOf(seed);
        shape.loopPercent = share;
        const Design d = generate(static_cast<std::uint64_t>(seed), shape);
        if (isAcyclic(d)) {
            EXPECT_EQ(writeSdf(d), writeSdf(designOf(seed))) << seed << ": nothing else changes";
            continue;
        }
        ++withLoops;
        const Clocks clocks = resolveClocks(d, {});
        EXPECT_LE(listPaths(d, clocks, {}).size(), static_cast<std::size_t>(shape.maximumPaths) * 2) << seed;
    }
    EXPECT_GT(withLoops, seeds * share / 100 / 2);
    EXPECT_LT(withLoops, seeds * share / 100 * 2);
}

TEST(Generate, SingleExceptionsNameAPathOnceOrAsAPair) {
    for (int seed = 1; seed < seeds; seed += 3) {
        const Design d = designOf(seed);
        const Clocks clocks = resolveClocks(d, {});
        const std::vector<DataPath> paths = listPaths(d, clocks, {});
        for (const Naming& n : namings(d, clocks, paths, {})) {
            ASSERT_LE(n.exceptions.size(), 2u) << seed;
            if (n.exceptions.size() == 2) {
                const Exception& first = d.exceptions[static_cast<std::size_t>(*n.exceptions.begin())];
                const Exception& second = d.exceptions[static_cast<std::size_t>(*n.exceptions.rbegin())];
                EXPECT_TRUE(first.setup == true && second.setup == false && first.from == second.from)
                    << seed;
            }
        }
    }
}

// --- Everything comes up ---

struct Seen {
    const Design& d;
    const Clocks& clocks;
    const std::vector<Naming>& namings;
    const Result& result;

    template <class List, class Test>
    static bool any(const List& list, Test test) {
        return std::ranges::any_of(list, test);
    }
    bool clock(const std::function<bool(const Clock&)>& test) const { return any(d.clocks, test); }
    bool generated(const std::function<bool(const Generated&)>& test) const {
        return any(d.clocks, [&](const Clock& c) { return c.generated && test(*c.generated); });
    }
    bool delay(const std::function<bool(const PortDelay&)>& test) const { return any(d.portDelays, test); }
    bool exception(const std::function<bool(const Exception&)>& test) const {
        return any(d.exceptions, test);
    }
    bool object(Object::Kind kind, bool from) const {
        return exception([&](const Exception& e) {
            return any(from ? e.from : e.to, [&](const Object& o) { return o.kind == kind; });
        });
    }
    bool through(Object::Kind kind) const {
        return exception([&](const Exception& e) {
            return any(e.through, [&](const auto& group) {
                return any(group, [&](const Object& o) { return o.kind == kind; });
            });
        });
    }
    bool governed(Exception::Kind kind, bool setup) const {
        return any(result, [&](const auto& end) {
            const std::optional<SideResult>& side = setup ? end.second.setup : end.second.hold;
            return side && any(side->pairs, [&](const Worst& w) {
                       return w.exception != none &&
                              d.exceptions[static_cast<std::size_t>(w.exception)].kind == kind;
                   });
        });
    }
    bool start(DataPath::Start kind) const {
        return any(namings, [&](const Naming& n) { return n.path->start == kind && n.launch.clock != none; });
    }
    // Whether a port without a clock is an end of a path under a delay exception. `delayed`: whether the port
    // has a delay of its own.
    bool timedPort(bool input, bool delayed) const {
        return any(namings, [&](const Naming& n) {
            const int pin = input ? n.path->pins.front() : n.path->pins.back();
            if (!d.isPort(pin) || (input ? n.launch.clock : n.capture.clock) != none)
                return false;
            const bool has = delay(
                [&](const PortDelay& p) { return p.port == pin && p.input == input && p.clock == none; });
            return has == delayed && any(n.exceptions, [&](int e) {
                       return d.exceptions[static_cast<std::size_t>(e)].kind >= Exception::Kind::maximumDelay;
                   });
        });
    }
    bool bothDelays() const {
        return delay([&](const PortDelay& p) {
            return p.add && delay([&](const PortDelay& other) {
                       return other.port == p.port && other.input == p.input &&
                              (other.clock == none) != (p.clock == none);
                   });
        });
    }
    // Whether two exceptions of a kind name the same end, one by a cell and the other by a pin of it.
    bool byCellAndPin(std::vector<Object> Exception::*end) const {
        return exception([&](const Exception& a) {
            return any(a.*end, [&](const Object& cell) {
                return cell.kind == Object::Kind::cell && exception([&](const Exception& b) {
                           return a.kind == b.kind && any(b.*end, [&](const Object& pin) {
                                      return pin.kind == Object::Kind::pin &&
                                             d.pins[static_cast<std::size_t>(pin.index)].cell == cell.index;
                                  });
                       });
            });
        });
    }
    // Likewise for a through point: one by another kind of object, the other by a pin that belongs to it.
    bool throughBoth(Object::Kind kind, const std::function<int(int)>& ownerOf) const {
        return exception([&](const Exception& a) {
            return a.through.size() == 1 && any(a.through[0], [&](const Object& owner) {
                       return owner.kind == kind && exception([&](const Exception& b) {
                                  return a.kind == b.kind && b.through.size() == 1 &&
                                         any(b.through[0], [&](const Object& pin) {
                                             return pin.kind == Object::Kind::pin &&
                                                    ownerOf(pin.index) == owner.index;
                                         });
                              });
                   });
        });
    }
    bool clocksMeet() const {
        return any(d.checks, [&](const Check& c) {
            return std::ranges::count_if(
                       clocks.live, [&](const LiveClock& k) { return k.arrivals.contains(c.clock); }) > 1;
        });
    }
};

struct Feature {
    const char* name;
    std::function<bool(const Seen&)> has;
};

using Kind = Exception::Kind;
using GKind = Generated::Kind;

const std::vector<Feature>& features() {
    static const std::vector<Feature> list{
        {"falling register",
         [](const Seen& s) {
             return Seen::any(s.d.checks, [](const Check& c) { return c.clockEdge == Edge::fall; });
         }},
        {"reset arc",
         [](const Seen& s) {
             return Seen::any(s.d.arcs, [](const Arc& a) { return a.kind == Arc::Kind::reset; });
         }},
        {"recovery",
         [](const Seen& s) { return Seen::any(s.d.checks, [](const Check& c) { return c.asynchronous; }); }},
        {"one-sided check",
         [](const Seen& s) {
             return Seen::any(s.d.checks, [](const Check& c) { return !c.setup || !c.hold; });
         }},
        {"unequal triple",
         [](const Seen& s) {
             return Seen::any(s.d.checks,
                              [](const Check& c) { return c.hold && c.hold->minimum < c.hold->maximum; });
         }},
        {"bare wire",
         [](const Seen& s) {
             return Seen::any(s.d.arcs,
                              [](const Arc& a) { return a.kind == Arc::Kind::wire && a.values.empty(); });
         }},
        {"pad",
         [](const Seen& s) { return Seen::any(s.d.cells, [](const Cell& c) { return c.type == "SB_IO"; }); }},
        {"open output",
         [](const Seen& s) {
             return Seen::any(s.d.pins, [](const Pin& p) {
                 return p.cell != none && p.direction == Direction::output && p.net == none && !p.omitted;
             });
         }},
        {"omitted output",
         [](const Seen& s) { return Seen::any(s.d.pins, [](const Pin& p) { return p.omitted; }); }},
        {"clocks meet", [](const Seen& s) { return s.clocksMeet(); }},
        {"virtual clock",
         [](const Seen& s) { return s.clock([](const Clock& c) { return c.targets.empty(); }); }},
        {"added clock", [](const Seen& s) { return s.clock([](const Clock& c) { return c.add; }); }},
        {"clock on two ports",
         [](const Seen& s) { return s.clock([](const Clock& c) { return c.targets.size() > 1; }); }},
        {"clock inside",
         [](const Seen& s) {
             return s.clock([&](const Clock& c) {
                 return !c.generated && !c.targets.empty() && !s.d.isPort(c.targets[0]);
             });
         }},
        {"replaced clock", [](const Seen& s) { return s.clocks.live.size() < s.d.clocks.size(); }},
        {"shifted waveform",
         [](const Seen& s) { return s.clock([](const Clock& c) { return c.rise > 0; }); }},
        {"uneven duty",
         [](const Seen& s) {
             return s.clock([](const Clock& c) { return 2 * (c.fall - c.rise) != c.period; });
         }},
        {"divide",
         [](const Seen& s) {
             return s.generated([](const Generated& g) { return g.kind == GKind::divide; });
         }},
        {"odd divide",
         [](const Seen& s) {
             return s.generated([](const Generated& g) { return g.kind == GKind::divide && g.factor == 3; });
         }},
        {"multiply",
         [](const Seen& s) {
             return s.generated([](const Generated& g) { return g.kind == GKind::multiply; });
         }},
        {"duty cycle",
         [](const Seen& s) {
             return s.generated([](const Generated& g) { return g.dutyCycle.has_value(); });
         }},
        {"edges",
         [](const Seen& s) {
             return s.generated([](const Generated& g) { return g.kind == GKind::edges; });
         }},
        {"edge shift",
         [](const Seen& s) {
             return s.generated([](const Generated& g) { return g.edgeShift.has_value(); });
         }},
        {"invert", [](const Seen& s) { return s.generated([](const Generated& g) { return g.invert; }); }},
        {"offset",
         [](const Seen& s) { return s.generated([](const Generated& g) { return g.offset != 0; }); }},
        {"phase", [](const Seen& s) { return s.generated([](const Generated& g) { return g.phase != 0; }); }},
        {"master clock",
         [](const Seen& s) { return s.generated([](const Generated& g) { return g.master != none; }); }},
        {"two generated on one pin",
         [](const Seen& s) { return s.clock([](const Clock& c) { return c.generated && c.add; }); }},
        {"generated of generated",
         [](const Seen& s) {
             return s.generated([&](const Generated& g) {
                 return Seen::any(s.clocks.live, [&](const LiveClock& k) {
                     return s.d.clocks[static_cast<std::size_t>(k.index)].generated &&
                            k.arrivals.contains(g.source);
                 });
             });
         }},
        {"ideal clock",
         [](const Seen& s) {
             return Seen::any(s.clocks.live, [](const LiveClock& k) { return !k.propagated; });
         }},
        {"source latency",
         [](const Seen& s) {
             return Seen::any(s.d.latencies, [](const Latency& l) {
                 return l.kind == Latency::Kind::source && l.late == true;
             });
         }},
        {"simple uncertainty",
         [](const Seen& s) {
             return Seen::any(s.d.uncertainties, [](const Uncertainty& u) { return u.from == none; });
         }},
        {"pair uncertainty",
         [](const Seen& s) {
             return Seen::any(s.d.uncertainties, [](const Uncertainty& u) { return u.from != none; });
         }},
        {"one-sided uncertainty",
         [](const Seen& s) {
             return Seen::any(s.d.uncertainties, [](const Uncertainty& u) { return u.setup.has_value(); });
         }},
        {"several groups",
         [](const Seen& s) {
             return Seen::any(s.d.clockGroups, [](const ClockGroups& g) { return g.groups.size() > 1; });
         }},
        {"a clock in several groups",
         [](const Seen& s) {
             return Seen::any(s.d.clockGroups, [](const ClockGroups& g) {
                 std::set<int> all;
                 std::size_t count = 0;
                 for (const auto& group : g.groups) {
                     all.insert(group.begin(), group.end());
                     count += group.size();
                 }
                 return all.size() < count;
             });
         }},
        {"single group",
         [](const Seen& s) {
             return Seen::any(s.d.clockGroups, [](const ClockGroups& g) { return g.groups.size() == 1; });
         }},
        {"clock fall delay",
         [](const Seen& s) { return s.delay([](const PortDelay& p) { return p.fall; }); }},
        {"added delay", [](const Seen& s) { return s.delay([](const PortDelay& p) { return p.add; }); }},
        {"one-sided delay",
         [](const Seen& s) { return s.delay([](const PortDelay& p) { return p.maximum.has_value(); }); }},
        {"delay without clock",
         [](const Seen& s) { return s.delay([](const PortDelay& p) { return p.clock == none; }); }},
        {"source included",
         [](const Seen& s) { return s.delay([](const PortDelay& p) { return p.sourceIncluded; }); }},
        {"network included",
         [](const Seen& s) { return s.delay([](const PortDelay& p) { return p.networkIncluded; }); }},
        {"delay of a replaced clock",
         [](const Seen& s) { return s.delay([](const PortDelay& p) { return p.early; }); }},
        {"delay of a generated clock",
         [](const Seen& s) {
             return s.delay([&](const PortDelay& p) {
                 return p.clock != none && s.d.clocks[static_cast<std::size_t>(p.clock)].generated;
             });
         }},
        {"case value", [](const Seen& s) { return !s.d.caseValues.empty(); }},
        {"disabled cell", [](const Seen& s) { return !disabledCells(s.d).empty(); }},
        {"disabled arc",
         [](const Seen& s) {
             return Seen::any(s.d.disables, [](const Disable& v) { return !v.from.empty(); });
         }},
        {"disabled pin",
         [](const Seen& s) {
             return Seen::any(s.d.disables,
                              [](const Disable& v) { return v.object.kind == Object::Kind::pin; });
         }},
        {"disabled port",
         [](const Seen& s) {
             return Seen::any(s.d.disables,
                              [](const Disable& v) { return v.object.kind == Object::Kind::port; });
         }},
        {"from register", [](const Seen& s) { return s.start(DataPath::Start::clockPin); }},
        {"from port", [](const Seen& s) { return s.start(DataPath::Start::port); }},
        {"from clock source", [](const Seen& s) { return s.start(DataPath::Start::clockSource); }},
        {"unclocked register",
         [](const Seen& s) {
             return Seen::any(s.namings, [](const Naming& n) { return n.capture.unclocked; });
         }},
        {"delay with a clock and one without", [](const Seen& s) { return s.bothDelays(); }},
        {"undelayed input under a delay exception", [](const Seen& s) { return s.timedPort(true, false); }},
        {"undelayed output under a delay exception", [](const Seen& s) { return s.timedPort(false, false); }},
        {"input without clock under a delay exception",
         [](const Seen& s) { return s.timedPort(true, true); }},
        {"output without clock under a delay exception",
         [](const Seen& s) { return s.timedPort(false, true); }},
        {"from a cell and its pin", [](const Seen& s) { return s.byCellAndPin(&Exception::from); }},
        {"to a cell and its pin", [](const Seen& s) { return s.byCellAndPin(&Exception::to); }},
        {"through a cell and its pin",
         [](const Seen& s) {
             return s.throughBoth(Object::Kind::cell,
                                  [&](int pin) { return s.d.pins[static_cast<std::size_t>(pin)].cell; });
         }},
        {"through a net and its driver",
         [](const Seen& s) {
             return s.throughBoth(Object::Kind::net,
                                  [&](int pin) { return s.d.pins[static_cast<std::size_t>(pin)].net; });
         }},
        {"false path on a side",
         [](const Seen& s) {
             return s.exception([](const Exception& e) { return e.kind == Kind::falsePath && e.setup; });
         }},
        {"multicycle for both",
         [](const Seen& s) {
             return s.exception([](const Exception& e) { return e.kind == Kind::multicycle && !e.setup; });
         }},
        {"multicycle start",
         [](const Seen& s) { return s.exception([](const Exception& e) { return e.start == true; }); }},
        {"multicycle end",
         [](const Seen& s) { return s.exception([](const Exception& e) { return e.start == false; }); }},
        {"latency ignored",
         [](const Seen& s) { return s.exception([](const Exception& e) { return e.ignoreLatency; }); }},
        {"from clock object", [](const Seen& s) { return s.object(Object::Kind::clock, true); }},
        {"from cell object", [](const Seen& s) { return s.object(Object::Kind::cell, true); }},
        {"from pin object", [](const Seen& s) { return s.object(Object::Kind::pin, true); }},
        {"from port object", [](const Seen& s) { return s.object(Object::Kind::port, true); }},
        {"to clock object", [](const Seen& s) { return s.object(Object::Kind::clock, false); }},
        {"to cell object", [](const Seen& s) { return s.object(Object::Kind::cell, false); }},
        {"to pin object", [](const Seen& s) { return s.object(Object::Kind::pin, false); }},
        {"to port object", [](const Seen& s) { return s.object(Object::Kind::port, false); }},
        {"through pin", [](const Seen& s) { return s.through(Object::Kind::pin); }},
        {"through net", [](const Seen& s) { return s.through(Object::Kind::net); }},
        {"through cell", [](const Seen& s) { return s.through(Object::Kind::cell); }},
        {"two groups of through",
         [](const Seen& s) { return s.exception([](const Exception& e) { return e.through.size() > 1; }); }},
        {"several in a group",
         [](const Seen& s) {
             return s.exception([](const Exception& e) {
                 return Seen::any(e.through, [](const auto& g) { return g.size() > 1; });
             });
         }},
        {"exceptions overlap",
         [](const Seen& s) {
             return Seen::any(s.namings, [](const Naming& n) { return n.exceptions.size() > 3; });
         }},
        {"worst setup by a multicycle", [](const Seen& s) { return s.governed(Kind::multicycle, true); }},
        {"worst hold by a multicycle", [](const Seen& s) { return s.governed(Kind::multicycle, false); }},
        {"worst setup by a maximum delay",
         [](const Seen& s) { return s.governed(Kind::maximumDelay, true); }},
        {"worst hold by a minimum delay",
         [](const Seen& s) { return s.governed(Kind::minimumDelay, false); }},
        {"nothing timed", [](const Seen& s) { return s.result.empty(); }},
        {"ten end points", [](const Seen& s) { return s.result.size() >= 10; }},
    };
    return list;
}

TEST(Generate, EverythingComesUp) {
    std::vector<int> counts(features().size());
    for (int seed = 0; seed < seeds; ++seed) {
        const Design d = designOf(seed);
        const Clocks clocks = resolveClocks(d, {});
        const std::vector<DataPath> paths = listPaths(d, clocks, {});
        const std::vector<Naming> named = namings(d, clocks, paths, {});
        const Result result = analyse(d, {});
        const Seen seen{d, clocks, named, result};
        for (std::size_t f = 0; f < counts.size(); ++f)
            counts[f] += features()[f].has(seen) ? 1 : 0;
    }
    for (std::size_t f = 0; f < counts.size(); ++f) {
        EXPECT_GT(counts[f], 0) << features()[f].name;
        RecordProperty(std::string(features()[f].name), counts[f]);
    }
}

} // namespace

} // namespace Brute
