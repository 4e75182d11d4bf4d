#include "CommandInputs.h"

#include <algorithm>
#include <limits>

namespace Scale {

namespace {

std::string number(std::size_t i) { return std::to_string(i); }

} // namespace

// A hundred registers have paths to each of a hundred others, and every pair has its own exception.
SlacksByEnd writeExceptions(Files& files) {
    constexpr std::size_t side = 100;
    constexpr long period = 10'000, gate = 30;
    const auto cyclesOf = [](std::size_t i, std::size_t j) {
        return static_cast<long>(2 + (7 * i + 13 * j) % 5);
    };
    const auto wireOf = [](std::size_t i, std::size_t j) {
        return static_cast<long>((31 * i + 17 * j) % 997);
    };
    files.constrain("create_clock -name clk -period 10 [get_ports clk]");
    for (std::size_t i = 0; i < side; ++i) {
        files.wire("clk", "a" + number(i) + "/C");
        files.wire("clk", "b" + number(i) + "/C");
        files.flipFlop("a" + number(i));
        files.flipFlop("b" + number(i));
    }
    SlacksByEnd expected;
    for (std::size_t j = 0; j < side; ++j) {
        std::vector<std::string> inputs;
        long worstSetup = std::numeric_limits<long>::max(), worstHold = worstSetup;
        for (std::size_t i = 0; i < side; ++i) {
            inputs.push_back("I" + number(i));
            files.wire("a" + number(i) + "/Q", "g" + number(j) + "/I" + number(i), wireOf(i, j));
            files.constrain("set_multicycle_path -setup " + std::to_string(cyclesOf(i, j)) + " -from a" +
                            number(i) + "/C -to b" + number(j) + "/D");
            const long arrival = clockToOutput + wireOf(i, j) + gate;
            worstSetup = std::min(worstSetup, cyclesOf(i, j) * period - setup - arrival);
            // The hold check moves with the setup check: it is one period before the setup edge.
            worstHold = std::min(worstHold, arrival - hold - (cyclesOf(i, j) - 1) * period);
        }
        files.gate("g" + number(j), inputs, gate);
        files.wire("g" + number(j) + "/Z", "b" + number(j) + "/D");
        expected["b" + number(j) + "/D"] = {worstSetup, worstHold};
    }
    return expected;
}

// A million pairs of clocks could meet. Each clock meets itself, and every hundredth also the next one.
SlacksByEnd writeClocks(Files& files) {
    constexpr std::size_t clocks = 1000, apart = 100;
    SlacksByEnd expected;
    const auto connect = [&](const std::string& from, const std::string& to, long wire, long period) {
        files.wire(from + "/Q", to + "/D", wire);
        expected[to + "/D"] = {period - setup - clockToOutput - wire, clockToOutput + wire - hold};
    };
    constexpr long period = 8'000;
    for (std::size_t k = 0; k < clocks; ++k) {
        files.constrain("create_clock -name k" + number(k) + " -period 8 [get_ports p" + number(k) + "]");
        for (const char* kind : {"a", "b", "c"}) {
            files.flipFlop(kind + number(k));
            files.wire("p" + number(k), kind + number(k) + "/C");
        }
        connect("a" + number(k), "b" + number(k), static_cast<long>(k), period);
        if (k % apart == 0)
            connect("b" + number(k), "c" + number(k + 1), 300, period);
    }
    return expected;
}

SlacksByEnd writeSeparateClocks(Files& files, std::size_t clocks) {
    constexpr long period = 8'000;
    constexpr std::size_t stages = 10;
    SlacksByEnd expected;
    const auto addShiftRegister = [&](const std::string& clock, std::size_t length) {
        files.constrain("create_clock -name " + clock + " -period 8 [get_ports " + clock + "]");
        for (std::size_t i = 0; i < length; ++i) {
            const std::string name = clock + "r" + number(i);
            files.flipFlop(name);
            files.wire(clock, name + "/C");
            if (i == 0)
                continue;
            files.wire(clock + "r" + number(i - 1) + "/Q", name + "/D", static_cast<long>(i));
            expected[name + "/D"] = {period - setup - clockToOutput - static_cast<long>(i),
                                     clockToOutput + static_cast<long>(i) - hold};
        }
    };
    for (std::size_t k = 0; k < clocks; ++k)
        addShiftRegister("k" + number(k), stages);
    addShiftRegister("main", stages * clocks);
    return expected;
}

PeriodsByClock writeFoundClocks(Files& files, std::size_t clocks) {
    constexpr long gate = 30;
    std::vector<std::string> inputs;
    PeriodsByClock periods;
    for (std::size_t i = 0; i < clocks; ++i) {
        const std::string name = "r" + number(i);
        const auto to = static_cast<long>(i % 997), from = static_cast<long>(i % 991);
        files.flipFlop(name);
        files.wire("p" + number(i), name + "/C");
        files.wire(name + "/Q", "g/I" + number(i), to);
        files.wire("g/Z", name + "/D", from);
        inputs.push_back("I" + number(i));
        periods["p" + number(i)] = clockToOutput + to + gate + from + setup;
    }
    files.gate("g", inputs, gate);
    return periods;
}

// The data goes from each register to the next, through a wire with a delay of 200.
void writeJoinedClocks(Files& files, std::size_t clocks, std::size_t registers) {
    std::vector<std::string> inputs;
    for (std::size_t i = 0; i < clocks; ++i) {
        inputs.push_back("I" + number(i));
        files.wire("p" + number(i), "g/I" + number(i), static_cast<long>(i));
    }
    files.gate("g", inputs, 10);
    for (std::size_t i = 0; i < registers; ++i) {
        const std::string name = "r" + number(i);
        files.flipFlop(name);
        files.wire("g/Z", name + "/C");
        files.wire(name + "/Q", "r" + number((i + 1) % registers) + "/D", 200);
    }
}

// One gate joins the outputs of a hundred thousand registers. The last but one is the latest, the first is
// the earliest.
SlacksByEnd writeWideEnd(Files& files) {
    constexpr std::size_t count = 100'000;
    constexpr long gate = 30, period = 10'000;
    files.constrain("create_clock -name clk -period 10 [get_ports clk]");
    std::vector<std::string> inputs;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string name = "a" + number(i);
        files.flipFlop(name);
        files.wire("clk", name + "/C");
        files.wire(name + "/Q", "g/I" + number(i), i == 0 ? 1 : i == count - 2 ? 900 : 500);
        inputs.push_back("I" + number(i));
    }
    files.gate("g", inputs, gate);
    files.flipFlop("end");
    files.wire("clk", "end/C");
    files.wire("g/Z", "end/D");
    return {{"end/D", {period - setup - clockToOutput - 900 - gate, clockToOutput + 1 + gate - hold}}};
}

// A tree of buffers, ten behind each, five levels deep. The registers at its leaves form one long shift
// register. The buffers above a leaf determine the delay of its clock.
SlacksByEnd writeClockTree(Files& files) {
    constexpr std::size_t fan = 10, leaves = 100'000;
    constexpr long period = 10'000, wire = 1'000;
    const auto bufferDelay = [](std::size_t index) { return static_cast<long>(100 + index % 7); };
    files.constrain("create_clock -name clk -period 10 [get_ports clk]");
    files.constrain("set_propagated_clock clk");
    std::vector<std::string> level{"clk"};
    std::vector<long> latency{0};
    while (level.size() < leaves) {
        std::vector<std::string> next;
        std::vector<long> nextLatency;
        const bool last = level.size() * fan == leaves;
        for (std::size_t i = 0; i < level.size() * fan; ++i) {
            const std::string name = (last ? "r" : "u" + number(level.size()) + "_") + number(i);
            files.wire(level[i / fan], name + (last ? "/C" : "/A"));
            long delay = 0;
            if (last) {
                files.flipFlop(name);
            } else {
                delay = bufferDelay(i);
                files.gate(name, {"A"}, delay);
            }
            next.push_back(last ? name : name + "/Z");
            nextLatency.push_back(latency[i / fan] + delay);
        }
        level = std::move(next);
        latency = std::move(nextLatency);
    }
    SlacksByEnd expected;
    for (std::size_t i = 1; i < leaves; ++i) {
        files.wire(level[i - 1] + "/Q", level[i] + "/D", wire);
        const long data = clockToOutput + wire + latency[i - 1] - latency[i];
        expected[level[i] + "/D"] = {period - setup - data, data - hold};
    }
    return expected;
}

SlacksByEnd writeLongPath(Files& files, std::size_t gates) {
    constexpr std::size_t doubled = 10;
    constexpr long period = 2'000'000, gate = 1;
    files.constrain("create_clock -name clk -period 2000 [get_ports clk]");
    for (const char* name : {"a", "b"}) {
        files.flipFlop(name);
        files.wire("clk", std::string(name) + "/C");
    }
    std::string before = "a/Q";
    for (std::size_t i = 0; i < gates; ++i) {
        const std::string name = "g" + number(i);
        const std::vector<std::string> inputs =
            i < doubled ? std::vector<std::string>{"B", "A"} : std::vector<std::string>{"A"};
        for (const std::string& input : inputs)
            files.wire(before, name + "/" + input, 1);
        files.gate(name, inputs, gate);
        before = name + "/Z";
    }
    files.wire(before, "b/D");
    const long arrival = clockToOutput + static_cast<long>(gates) * (gate + 1);
    return {{"b/D", {period - setup - arrival, arrival - hold}}};
}

SlacksByEnd writeTappedChain(Files& files, std::size_t gates) {
    constexpr long period = 10'000, gate = 1;
    files.constrain("create_clock -name clk -period 10 [get_ports clk]");
    files.flipFlop("a");
    files.wire("clk", "a/C");
    SlacksByEnd expected;
    std::string before = "a/Q";
    for (std::size_t i = 0; i < gates; ++i) {
        const std::string name = "g" + number(i), end = "r" + number(i);
        files.gate(name, {"A"}, gate);
        files.wire(before, name + "/A", 1);
        before = name + "/Z";
        files.flipFlop(end);
        files.wire("clk", end + "/C");
        files.wire(before, end + "/D");
        const long arrival = clockToOutput + static_cast<long>(i + 1) * (gate + 1);
        expected[end + "/D"] = {period - setup - arrival, arrival - hold};
    }
    return expected;
}

// Gates that all drive each other. The engine chooses where to cut the loop, but the slacks at the end point
// are known: the shortest way passes only g0, and no way without a loop is longer than all gates together.
void writeLoop(Files& files, std::size_t gates) {
    files.constrain("create_clock -name clk -period 10 [get_ports clk]");
    for (const char* name : {"a", "b"}) {
        files.flipFlop(name);
        files.wire("clk", std::string(name) + "/C");
    }
    for (std::size_t i = 0; i < gates; ++i) {
        std::vector<std::string> inputs;
        for (std::size_t j = 0; j < gates; ++j)
            if (i != j) {
                inputs.push_back("I" + number(j));
                files.wire("g" + number(j) + "/Z", "g" + number(i) + "/I" + number(j), 1);
            }
        if (i == 0) {
            inputs.emplace_back("A");
            files.wire("a/Q", "g0/A");
        }
        files.gate("g" + number(i), inputs, 1);
    }
    files.wire("g0/Z", "b/D");
}

} // namespace Scale
