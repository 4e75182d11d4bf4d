// A generated design: registers in a row, and between them layers of 3-input cells, each fed by near
// neighbours of the layer before, so that the cone of an end point holds a bounded number of launch points.
// Same parameters, same design.
#pragma once

#include "Pelko/Model.h"

#include <random>
#include <string>
#include <vector>

namespace bench {

struct LayeredParameters {
    std::size_t poles = 10'000; // approximately
    unsigned depth = 30;
    unsigned reach =
        3; // distance from which a cell reads: a cone holds at most 2 × reach × depth + 1 launch points
    unsigned clocks = 1;
    unsigned exceptions = 0;
};

class LayeredDesign {
public:
    explicit LayeredDesign(const LayeredParameters& parameters) : parameters_(parameters), model_("layered") {
        width_ = std::max<std::size_t>(parameters.poles / (parameters.depth + 4), 8);
        makeClocks();
        makeRegisters();
        makeLogic();
        makeExceptions();
    }

    Pelko::Model& getModel() { return model_; }
    std::size_t getWidth() const { return width_; }
    double getPoleCount() const { return static_cast<double>(model_.getCell()->getPoles().getCount()); }
    double getEdgeCount() const { return static_cast<double>(model_.getCell()->getEdges().getCount()); }

private:
    using Delay = Pelko::Delay;
    using Pole = Pelko::Pole;

    struct Register {
        Pole* clock;
        Pole* output;
        Pole* data;
        Pole* check;
    };

    void makeClocks() {
        for (unsigned i = 0; i < parameters_.clocks; ++i) {
            Pole* source = Pole::createClockSource(model_.getCell());
            const int period = 10'000 + 2'000 * static_cast<int>(i);
            model_.getAnalyzer()->setClock(source, Delay(period), Delay(0), Delay(period / 2),
                                           Delay(period / 2));
            clocks_.push_back(source);
        }
    }

    // Neighbours share a clock, so that clocks meet only at their borders.
    void makeRegisters() {
        for (std::size_t i = 0; i < width_; ++i) {
            Pelko::Pin* pin = Pelko::Pin::create(model_.getModule(), "C");
            Register each{};
            each.clock = Pole::createClock(model_.getCell(), pin, Pelko::ClockMode::Rising);
            each.output = Pole::create(model_.getCell());
            each.data = Pole::create(model_.getCell());
            each.check = Pole::createCheck(each.clock);
            connect(clocks_[i * clocks_.size() / width_], each.clock, 500);
            connect(each.clock, each.output, 300);
            Pelko::Edge::create(each.data, each.check, Delay(20), Delay(80));
            registers_.push_back(each);
        }
    }

    void makeLogic() {
        std::vector<Pole*> layer;
        for (const Register& each : registers_)
            layer.push_back(each.output);
        for (unsigned level = 0; level < parameters_.depth; ++level) {
            std::vector<Pole*> next;
            for (std::size_t i = 0; i < width_; ++i) {
                Pole* cell = Pole::create(model_.getCell());
                const std::size_t side = 1 + random_() % parameters_.reach;
                connect(layer[i], cell, 100);
                connect(layer[(i + side) % width_], cell, 100);
                connect(layer[(i + width_ - side) % width_], cell, 100);
                next.push_back(cell);
            }
            layer = std::move(next);
        }
        for (std::size_t i = 0; i < width_; ++i)
            connect(layer[i], registers_[i].data, 50);
    }

    // False, multicycle and delay exceptions in turn, between small groups of registers.
    void makeExceptions() {
        for (unsigned i = 0; i < parameters_.exceptions; ++i) {
            Pelko::CPath::Objects objects;
            const std::size_t first = i * width_ / parameters_.exceptions;
            for (std::size_t k = 0; k < 5; ++k) {
                objects.sources.push_back(registers_[(first + k) % width_].clock);
                objects.targets.push_back(registers_[(first + k + 2) % width_].check);
            }
            switch (i % 3) {
            case 0:
                Pelko::FPath::create(objects);
                break;
            case 1:
                Pelko::MPath::create(objects, 2);
                break;
            default:
                Pelko::DPath::createMaximum(objects, Delay(8'000));
            }
        }
    }

    void connect(Pole* from, Pole* to, int delay) {
        const int late = delay + static_cast<int>(random_() % static_cast<unsigned>(delay));
        Pelko::Edge::create(from, to, Delay(delay), Delay(late));
    }

    LayeredParameters parameters_;
    Pelko::Model model_;
    std::mt19937 random_{20240607};
    std::size_t width_ = 0;
    std::vector<Pole*> clocks_;
    std::vector<Register> registers_;
};

} // namespace bench
