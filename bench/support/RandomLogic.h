// A generated design: registers in a row, and layers of random logic between them. Every pole of a layer is
// driven by a pole of the layer before, each by a different one; more than half are also driven by a second
// pole from anywhere in that layer. So there are three arcs per two poles, cones soon hold every register,
// and every pole has fan-out.
//
// The same parameters make the same design: the random numbers and their use are fixed.
#pragma once

#include "Pelko/Model.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

namespace bench {

struct RandomLogicParameters {
    std::size_t poles = 100'000; // approximately
    unsigned depth = 30;
    unsigned clocks = 1;
    unsigned exceptions = 0;
};

class RandomLogic {
public:
    explicit RandomLogic(const RandomLogicParameters& parameters)
        : parameters_(parameters), model_("random logic"),
          width_(std::max<std::size_t>(parameters.poles / (parameters.depth + polesOfRegister), 8)) {
        model_.getCell()->reserve(parameters.poles, parameters.poles * 3 / 2);
        makeClocks();
        makeRegisters();
        makeLogic();
        makeExceptions();
        model_.getApplication()->setBatch(true);
    }

    Pelko::Model& getModel() { return model_; }
    std::size_t getPoleCount() const { return model_.getCell()->getPoles().getCount(); }
    std::size_t getEdgeCount() const { return model_.getCell()->getEdges().getCount(); }

    // The subdomain of the first clock, in which all registers launch and latch. It is made without a walk.
    Pelko::Subdomain* captureAll() {
        auto* subdomain = Pelko::Subdomain::create(Pelko::Domain::create(clocks_.front(), clocks_.front()),
                                                   Pelko::ClockMode(Pelko::ClockMode::Rising),
                                                   Pelko::ClockMode(Pelko::ClockMode::Rising));
        for (const Register& each : registers_) {
            subdomain->captureLatch(each.clock);
            subdomain->captureLaunch(each.clock);
        }
        subdomain->setSetupRelation(period);
        subdomain->setHoldRelation(Pelko::Delay(0));
        return subdomain;
    }

private:
    using Delay = Pelko::Delay;
    using Pole = Pelko::Pole;

    static constexpr std::size_t polesOfRegister = 4;
    static constexpr std::size_t groupOfException = 5;
    static inline const Delay period{10'000};

    struct Register {
        Pole* clock;
        Pole* output;
        Pole* data;
        Pole* check;
    };

    // A linear congruential generator, so that designs are the same with every standard library.
    std::size_t draw(std::size_t bound) {
        state_ = state_ * 6364136223846793005UL + 1442695040888963407UL;
        return static_cast<std::size_t>((state_ >> 33) % bound);
    }

    void makeClocks() {
        for (unsigned i = 0; i < parameters_.clocks; ++i) {
            Pole* source = Pole::createClockSource(model_.getCell());
            const Delay own(int(period) + 2'000 * static_cast<int>(i));
            model_.getAnalyzer()->setClock(source, own, Delay(0), Delay(int(own) / 2), Delay(int(own) / 2));
            clocks_.push_back(source);
        }
    }

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
            shuffle(layer);
            std::vector<Pole*> next(width_);
            for (std::size_t i = 0; i < width_; ++i) {
                next[i] = Pole::create(model_.getCell());
                connect(layer[i], next[i], 100);
                // 57 percent, so that registers and logic together have three arcs per two poles.
                const std::size_t other = draw(width_);
                if (draw(100) < 57 && other != i)
                    connect(layer[other], next[i], 100);
            }
            layer = std::move(next);
        }
        shuffle(layer);
        for (std::size_t i = 0; i < width_; ++i)
            connect(layer[i], registers_[i].data, 50);
    }

    void shuffle(std::vector<Pole*>& poles) {
        for (std::size_t i = poles.size(); i > 1; --i)
            std::swap(poles[i - 1], poles[draw(i)]);
    }

    // False, multicycle and delay exceptions in turn, between small groups of registers.
    void makeExceptions() {
        for (unsigned i = 0; i < parameters_.exceptions; ++i) {
            Pelko::CPath::Objects objects;
            const std::size_t first = i * width_ / parameters_.exceptions;
            for (std::size_t k = 0; k < groupOfException; ++k) {
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
        const int late = delay + static_cast<int>(draw(static_cast<std::size_t>(delay)));
        Pelko::Edge::create(from, to, Delay(delay), Delay(late));
    }

    RandomLogicParameters parameters_;
    Pelko::Model model_;
    std::size_t width_;
    std::uint64_t state_ = 20240607;
    std::vector<Pole*> clocks_;
    std::vector<Register> registers_;
};

} // namespace bench
