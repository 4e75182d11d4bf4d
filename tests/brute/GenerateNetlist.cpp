#include "GenerateNetlist.h"

#include <algorithm>
#include <string>

namespace Brute {

namespace {

std::size_t at(int index) { return static_cast<std::size_t>(index); }

class Builder {
public:
    Builder(Random& random, const Shape& shape) : random_(random), shape_(shape) {}

    Skeleton run() {
        clockNetworks();
        registers();
        dataPorts();
        gates();
        ends();
        if (shape_.openOutputs)
            openOutputs();
        return std::move(s_);
    }

private:
    // --- Parts ---

    int port(const std::string& name, Direction direction) {
        design().pins.push_back({name, none, direction, none});
        return static_cast<int>(design().pins.size()) - 1;
    }

    int cell(const std::string& name, const std::string& type) {
        design().cells.push_back({name, type, {}});
        return static_cast<int>(design().cells.size()) - 1;
    }

    int pin(int owner, const std::string& name, Direction direction) {
        const int index = static_cast<int>(design().pins.size());
        design().pins.push_back({name, owner, direction, none});
        design().cells[at(owner)].pins.push_back(index);
        return index;
    }

    Triple triple(int least, int greatest) {
        const int value = random_.between(least, greatest);
        if (!spread_)
            return {value, value, value};
        const int more = random_.between(0, 150), most = more + random_.between(0, 150);
        return {value, value + more, value + most};
    }

    Values values(int least, int greatest) {
        Values list{triple(least, greatest)};
        if (random_.chance(60))
            list.push_back(triple(least, greatest));
        return list;
    }

    int connect(int driver, int sink) {
        int net = design().pins[at(driver)].net;
        if (net == none) {
            net = static_cast<int>(design().nets.size());
            design().nets.push_back({"n" + std::to_string(net), driver, {}});
            design().pins[at(driver)].net = net;
        }
        design().nets[at(net)].sinks.push_back(sink);
        design().pins[at(sink)].net = net;
        const bool bare = shape_.bareWires && random_.chance(5);
        design().arcs.push_back(
            {Arc::Kind::wire, driver, sink, Edge::any, bare ? Values{} : values(50, 900)});
        return sink;
    }

    void arc(Arc::Kind kind, int from, int to, Edge edge, int least, int greatest) {
        design().arcs.push_back({kind, from, to, edge, values(least, greatest)});
    }

    // Adds a gate with its inputs connected. Returns the output pin.
    int gate(const std::string& name, const std::string& type, const std::vector<int>& inputs) {
        static const std::vector<std::string> names{"A", "B", "C"};
        const int made = cell(name, type);
        std::vector<int> ins;
        for (std::size_t i = 0; i < inputs.size(); ++i)
            ins.push_back(pin(made, names[i], Direction::input));
        const int out = pin(made, "Z", Direction::output);
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            connect(inputs[i], ins[i]);
            arc(Arc::Kind::gate, ins[i], out, Edge::any, 80, 900);
        }
        return out;
    }

    // A pad passes its port on. Its delays are not written.
    int inputPad(int from) {
        const int made = cell(design().pins[at(from)].name + "$io", "SB_IO");
        const int package = pin(made, "PACKAGE_PIN", Direction::inout);
        const int data = pin(made, "D_IN_0", Direction::output);
        connect(from, package);
        design().arcs.back().values.clear();
        design().arcs.push_back({Arc::Kind::gate, package, data, Edge::any, {}});
        return data;
    }

    void outputPad(int driver, int to) {
        const int made = cell(design().pins[at(to)].name + "$io", "SB_IO");
        const int data = pin(made, "D_OUT_0", Direction::input);
        const int package = pin(made, "PACKAGE_PIN", Direction::inout);
        connect(driver, data);
        design().arcs.push_back({Arc::Kind::gate, data, package, Edge::any, {}});
        connect(package, to);
        design().arcs.back().values.clear();
    }

    bool wantsPad() { return shape_.pads && random_.chance(25); }

    // --- The clock networks ---

    void clockNetworks() {
        spread_ = random_.chance(70);
        const int ports = random_.between(1, std::min(3, shape_.maximumClocks));
        for (int i = 0; i < ports; ++i) {
            const int from = port("clk" + std::to_string(i), Direction::input);
            s_.clockPorts.push_back(from);
            int tap = wantsPad() ? inputPad(from) : from;
            for (int n = random_.between(0, 2); n > 0; --n) {
                tap = gate("ckbuf" + std::to_string(clockGates_++), "CKBUF", {tap});
                s_.clockBuffers.push_back(tap);
                if (random_.chance(50))
                    taps_.push_back(tap);
            }
            taps_.push_back(tap);
        }
        if (random_.chance(20)) // clocks meet, or one meets itself
            taps_.push_back(gate("ckmux" + std::to_string(clockGates_++), "CKMUX",
                                 {random_.of(taps_), random_.of(taps_)}));
    }

    void registers() {
        const int count = random_.between(shape_.minimumRegisters, shape_.maximumRegisters);
        for (int i = 0; i < count; ++i) {
            makeRegister(i);
            if (random_.chance(8)) // data is an input of a clock gate
                taps_.push_back(gate("ckgate" + std::to_string(clockGates_++), "CKGATE",
                                     {random_.of(taps_), random_.of(signals_)}));
            if (random_.chance(15) && s_.dividers.size() < 3)
                makeDivider();
        }
    }

    void makeRegister(int number) {
        const int kind = random_.between(0, 9);
        const bool odd = random_.chance(5); // a name that needs an escape
        const int made = cell((odd ? "r$" : "r") + std::to_string(number), "DFF" + std::to_string(kind));
        s_.registers.push_back(made);
        const int clock = pin(made, "CLK", Direction::input);
        connect(random_.of(taps_), clock);
        const bool falling = kind == 1 || kind == 2;
        const Edge edge = falling ? Edge::fall : Edge::rise;
        checkedPin(made, "D", clock, edge, false);
        const int out = pin(made, "Q", Direction::output);
        arc(Arc::Kind::clockToOutput, clock, out, random_.chance(70) ? edge : Edge::any, 200, 800);
        signals_.push_back(out);
        lastRegister_ = {clock, out};
        if (kind == 3 || kind == 4)
            checkedPin(made, "EN", clock, edge, false);
        if (kind == 5 || kind == 2) {
            const int reset = checkedPin(made, "R", clock, edge, true);
            if (random_.chance(70))
                arc(Arc::Kind::reset, reset, out, random_.chance(50) ? Edge::rise : Edge::any, 200, 800);
        }
        if (kind == 6) { // works on both edges
            checkedPin(made, "D2", clock, Edge::fall, false);
            const int second = pin(made, "Q2", Direction::output);
            arc(Arc::Kind::clockToOutput, clock, second, Edge::fall, 200, 800);
            for (Arc& a : design().arcs)
                if (a.to == out)
                    a.edge = Edge::rise;
            signals_.push_back(second);
        }
    }

    int checkedPin(int owner, const std::string& name, int clock, Edge edge, bool asynchronous) {
        const int data = pin(owner, name, Direction::input);
        open_.push_back(data);
        Check check{data, clock, Edge::any, edge, asynchronous, triple(50, 500), triple(-100, 300)};
        if (random_.chance(6))
            (random_.chance(50) ? check.setup : check.hold).reset();
        if (random_.chance(60)) {
            design().checks.push_back(check);
            return data;
        }
        check.dataEdge = Edge::rise;
        design().checks.push_back(check);
        if (check.setup)
            check.setup = triple(50, 500);
        if (check.hold)
            check.hold = triple(-100, 300);
        check.dataEdge = Edge::fall;
        design().checks.push_back(check);
        return data;
    }

    void makeDivider() {
        Divider divider{lastRegister_.clockPin, lastRegister_.output};
        if (random_.chance(30))
            divider.output = gate("ckbuf" + std::to_string(clockGates_++), "CKBUF", {divider.output});
        s_.dividers.push_back(divider);
        taps_.push_back(divider.output);
        if (random_.chance(50)) // so that it is used
            taps_.push_back(divider.output);
    }

    // --- Data ---

    void dataPorts() {
        const bool vector = random_.chance(30);
        for (int i = random_.between(1, 5) - 1; i >= 0; --i) {
            const int from =
                port(vector ? "in[" + std::to_string(i) + "]" : "in" + std::to_string(i), Direction::input);
            s_.inputs.push_back(from);
            signals_.push_back(wantsPad() && !vector ? inputPad(from) : from);
        }
    }

    int signal() {
        if (random_.chance(3)) {
            return random_.of(taps_);
        }
        const int size = static_cast<int>(signals_.size());
        const int first = random_.chance(50) ? 0 : std::max(0, size - 6);
        return signals_[at(random_.between(first, size - 1))];
    }

    void gates() {
        const int count = random_.between(shape_.minimumGates, shape_.maximumGates);
        for (int i = 0; i < count; ++i) {
            const int inputs = random_.between(1, 3);
            std::vector<int> from;
            for (int n = 0; n < inputs; ++n)
                if (const int s = signal(); std::ranges::find(from, s) == from.end())
                    from.push_back(s);
            s_.gates.push_back(static_cast<int>(design().cells.size()));
            signals_.push_back(gate("g" + std::to_string(i), "LUT" + std::to_string(from.size()), from));
        }
    }

    void ends() {
        for (int data : open_)
            connect(signal(), data);
        for (int i = random_.between(1, 4) - 1; i >= 0; --i) {
            const int to = port("out" + std::to_string(i), Direction::output);
            s_.outputs.push_back(to);
            if (wantsPad())
                outputPad(signal(), to);
            else
                connect(signal(), to);
        }
    }

    // Adds second outputs of registers and gates, which are not connected. Netlists leave out some of all
    // open outputs that have a delay.
    void openOutputs() {
        for (const std::vector<int>* cells : {&s_.registers, &s_.gates})
            for (const int owner : *cells)
                if (random_.chance(30))
                    secondOutput(owner);
        for (const Arc& a : design().arcs) {
            Pin& to = design().pins[at(a.to)];
            if (to.cell != none && to.net == none && !a.values.empty() && random_.chance(50))
                to.omitted = true;
        }
    }

    // Has delays like those of the first output.
    void secondOutput(int owner) {
        const int out = pin(owner, "OPEN", Direction::output);
        const std::size_t known = design().arcs.size();
        int first = none;
        for (std::size_t i = 0; i < known; ++i) {
            const Arc a = design().arcs[i];
            if (a.kind == Arc::Kind::wire || design().pins[at(a.from)].cell != owner)
                continue;
            first = first == none ? a.to : first;
            if (a.to == first)
                arc(a.kind, a.from, out, a.edge, 100, 900);
        }
    }

    Design& design() { return s_.design; }

    Random& random_;
    const Shape& shape_;
    Skeleton s_;
    std::vector<int> taps_;    // pins that can drive a clock pin
    std::vector<int> signals_; // pins that can drive a data pin
    std::vector<int> open_;    // data pins without a driver yet
    Divider lastRegister_;
    int clockGates_ = 0;
    bool spread_ = true; // triples have three values
};

} // namespace

Skeleton generateNetlist(Random& random, const Shape& shape) { return Builder(random, shape).run(); }

} // namespace Brute
