// Which times of the constraints count as rounded.
#include "model/RoundedTimes.h"

#include <gtest/gtest.h>

namespace {

Base::Decimal ns(const char* text) { return *Base::Decimal::parse(text); }

std::string noteOf(const Design::Constraints& constraints) {
    constexpr int scale = -12;
    Base::Rounding rounding;
    Model::lookAtTimes(constraints, scale, rounding);
    Base::Diagnostics diagnostics;
    rounding.report(scale, diagnostics);
    return diagnostics.all().empty() ? "" : toString(diagnostics.all().front());
}

void addClock(Design::Constraints& all, std::uint32_t line, const char* period, const char* rise,
              const char* fall) {
    Design::Clock clock;
    clock.origin = {Design::FileId(0U), line};
    clock.period = ns(period);
    clock.rise = ns(rise);
    clock.fall = ns(fall);
    all.clocks.push_back(clock);
}

void addDelay(Design::Constraints& all, std::uint32_t line, const char* min, const char* max) {
    Design::PortDelay delay;
    delay.origin = {Design::FileId(0U), line};
    delay.min = ns(min);
    delay.max = ns(max);
    all.portDelays.push_back(delay);
}

void addException(Design::Constraints& all, std::uint32_t line, Design::Exception::Kind kind,
                  const char* value) {
    Design::Exception exception;
    exception.origin = {Design::FileId(0U), line};
    exception.kind = kind;
    exception.value = ns(value);
    all.exceptions.push_back(exception);
}

struct Row {
    const char* name;
    void (*add)(Design::Constraints&);
    const char* expected;
};

TEST(RoundedTimes, AreThoseThatWereWritten) {
    const Row rows[] = {
        {"nothing", [](Design::Constraints&) {}, ""},
        {"whole ps", [](Design::Constraints& all) { addClock(all, 1, "3.3330", "0", "1.6665"); }, ""},
        {"a period", [](Design::Constraints& all) { addClock(all, 2, "3.3333", "0", "1.66665"); },
         "d.sdc:2: note: 1 value is rounded to 1ps; --resolution 100fs keeps it"},
        {"a waveform", [](Design::Constraints& all) { addClock(all, 3, "10", "0.00001", "5.00001"); },
         "d.sdc:3: note: 2 values are rounded to 1ps; --resolution 10fs keeps them all"},
        {"a clock that another one replaced",
         [](Design::Constraints& all) {
             addClock(all, 3, "3.3333", "0", "1.66665");
             all.clocks.back().removed = true;
         },
         ""},
        {"a latency of both sides",
         [](Design::Constraints& all) {
             addClock(all, 9, "10", "0", "5");
             all.clocks.back().sourceLatency = {ns("0.0001"), ns("0.0001")};
         },
         "d.sdc:9: note: 1 value is rounded to 1ps; --resolution 100fs keeps it"},
        {"a value for both sides, and one for each",
         [](Design::Constraints& all) {
             addDelay(all, 4, "0.0005", "0.0005");
             addDelay(all, 5, "0.0005", "0.0006");
         },
         "d.sdc:4: note: 3 values are rounded to 1ps; --resolution 100fs keeps them all"},
        {"a delay exception, and no multicycle",
         [](Design::Constraints& all) {
             addException(all, 6, Design::Exception::Kind::maxDelay, "1.0000001");
             addException(all, 7, Design::Exception::Kind::multicycle, "1.5e-9");
         },
         "d.sdc:6: note: 1 value is rounded to 1ps; no --resolution keeps it, the finest is 1fs"},
        {"uncertainty",
         [](Design::Constraints& all) {
             const Design::FileId file(0U);
             const Design::ClockId clock(0U);
             all.pinUncertainties.push_back({Design::PinId(0U), {ns("0.0001"), ns("0.0001")}, {file, 7}});
             all.pairUncertainties.push_back({clock, clock, {ns("0.0001"), std::nullopt}, {file, 8}});
         },
         "d.sdc:7: note: 2 values are rounded to 1ps; --resolution 100fs keeps them all"},
    };
    for (const Row& row : rows) {
        Design::Constraints constraints;
        constraints.files = {"d.sdc"};
        row.add(constraints);
        EXPECT_EQ(noteOf(constraints), row.expected) << row.name;
    }
}

} // namespace
