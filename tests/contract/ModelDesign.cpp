// Builds designs in the in-memory model.
#include "Design.h"

#include "Pelko/Model.h"

namespace Contract {

namespace {

using namespace Pelko;

class ModelDesign final : public Design {
public:
    Pole* addPole(const std::string& name) override { return Pole::create(model_.getCell(), name); }
    Pole* addInput(const std::string& name) override { return Pole::createInput(model_.getCell(), name); }
    Pole* addOutput(const std::string& name) override { return Pole::createOutput(model_.getCell(), name); }
    Pole* addClockSource(const std::string& name) override {
        return Pole::createClockSource(model_.getCell(), name);
    }
    Pole* addClock(const std::string& name, const ClockMode& mode) override {
        return Pole::createClock(model_.getCell(), Pin::create(model_.getModule(), name), mode, name);
    }
    Pole* addCheck(Pole* clock, const std::string& name) override { return Pole::createCheck(clock, name); }
    Edge* addEdge(Pole* source, Pole* target, int minimum, int maximum) override {
        return Edge::create(source, target, Delay(minimum), Delay(maximum));
    }

    Instance* addInstance(const std::string& name) override {
        return Instance::create(model_.getModule(), name);
    }
    PLL* addPLL(const std::string& name, bool feedbackCompensation) override {
        PLL* pll = PLL::create(model_.getModule(), name);
        pll->setFeedbackCompensation(feedbackCompensation);
        return pll;
    }
    WFG* addWFG(const std::string& name, bool feedback) override {
        WFG* generator = WFG::create(model_.getModule(), name);
        generator->setPLLFeedback(feedback);
        return generator;
    }
    Pin* addPin(Instance* instance, const std::string& name) override {
        return Pin::create(instance, name, name == "VCO" ? Pin::Direction::Driver : Pin::Direction::Receiver);
    }
    Net* addNet(Pin* driver, const std::vector<Pin*>& receivers) override {
        Net* net = Net::create(model_.getModule(), driver->getName());
        driver->connect(net);
        for (Pin* pin : receivers)
            pin->connect(net);
        return net;
    }

    void setClock(Pole* root, int period, int shift, int highWidth, int lowWidth) override {
        analyzer->setClock(root, Delay(period), Delay(shift), Delay(highWidth), Delay(lowWidth));
    }
    void setInputConstraint(Pole* pole, const IOConstraint& constraint) override {
        analyzer->setInputConstraint(pole, constraint);
    }
    void setOutputConstraint(Pole* pole, const IOConstraint& constraint) override {
        analyzer->setOutputConstraint(pole, constraint);
    }
    void separate(Pole* a, Pole* b, bool exclusive) override {
        analyzer->addClockGroups(
            exclusive ? Analyzer::GroupKind::Exclusive : Analyzer::GroupKind::Asynchronous, {{a}, {b}});
    }

    FPath* addFalsePath(const PoleList& sources, const PoleList& targets, bool insulated) override {
        return FPath::create({sources, targets, {}}, insulated);
    }
    DPath* addDelayPath(const PoleList& sources, const PoleList& targets, int delay, bool maximum) override {
        return maximum ? DPath::createMaximum({sources, targets, {}}, Delay(delay))
                       : DPath::createMinimum({sources, targets, {}}, Delay(delay));
    }
    MPath* addMulticycle(const PoleList& sources, const PoleList& targets, unsigned long cycles) override {
        return MPath::create({sources, targets, {}}, cycles);
    }

private:
    Model model_{"top"};
};

} // namespace

std::unique_ptr<Design> Design::create() { return std::make_unique<ModelDesign>(); }

} // namespace Contract
