// PLL feedback: the delay from a feedback clock source to the feedback pin of each compensating PLL. It is
// stored for the outputs of the waveform generators that the PLL's oscillator drives. The clock walk of a
// sweep starts with the negated delay.
//
// The first backward path to a qualifying source determines the delay. Marks are cleared after all PLLs, so a
// pole that was walked for one PLL is not walked again for the next. Loops are skipped, and neither cut nor
// counted.
#include "Pelko/Analyzer.h"
#include "Pelko/Cell.h"
#include "Pelko/Module.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/Walk.h"

namespace Vorlen {

namespace {

constexpr const char* feedbackPin = "FBK";
constexpr const char* oscillatorPin = "VCO";
constexpr const char* generatorPin = "ZO";

// Whether the pole is the output of a waveform generator with feedback compensation.
bool isFeedbackSource(const Pelko::Pole* pole) {
    const Pelko::Pin* pin = pole->getPin();
    const auto* generator = pin ? dynamic_cast<const Pelko::WFG*>(pin->getInstance()) : nullptr;
    return generator && generator->hasPLLFeedback();
}

class FeedbackVisitor {
public:
    FeedbackVisitor(Tool& tool, Timing& timing) : tool_(tool), timing_(timing) {}

    bool enter(Pelko::Pole* pole) {
        if (pole->isMarked())
            return false;
        tool_.loopPush(pole);
        if (pole->isClockSource() && isFeedbackSource(pole))
            timing_ = Timing(Pelko::Delay(0), Pelko::Delay(0));
        return true;
    }

    Pelko::Edges fan(const Pelko::Pole* pole) const {
        return pole->isClockSource() ? Pelko::Edges() : pole->getIncomingEdges();
    }

    Pelko::Pole* follow(const Pelko::Edge* edge) const {
        if (!timing_.isUndefined() || tool_.isLooping(edge->getSource()))
            return nullptr;
        return edge->getSource();
    }

    void back(const Pelko::Edge* edge) { timing_ += Timing(edge->getMinDelay(), edge->getMaxDelay()); }

    void leave(Pelko::Pole* pole) {
        tool_.loopPop();
        pole->mark();
    }

private:
    Tool& tool_;
    Timing& timing_;
};

// Missing pins, nets and poles are skipped.
void storeFeedback(const Pelko::PLL& pll, const Timing& timing) {
    const Pelko::Pin* oscillator = pll.getPin(oscillatorPin);
    if (!oscillator || !oscillator->isConnected())
        return;
    for (const Pelko::Pin* receiver : oscillator->getNet()->getReceivers()) {
        const auto* generator = dynamic_cast<const Pelko::WFG*>(receiver->getInstance());
        const Pelko::Pin* output = generator ? generator->getPin(generatorPin) : nullptr;
        if (Pelko::Pole* pole = output ? output->getMainPole() : nullptr)
            Pelko::analyzer->setPLLFeedbackDelay(pole, timing.getMinimumDelay(), timing.getMaximumDelay());
    }
}

} // namespace

void Tool::pllFeedbackStem() {
    const detail::MarkGuard guard;
    loopOpen();
    for (const Pelko::PLL* pll : Pelko::cell->getModule()->getPLLs()) {
        Pelko::Pole* feedback = Pelko::cell->getMainPole(pll->getPin(feedbackPin));
        if (!feedback || !pll->hasFeedbackCompensation())
            continue;
        Timing timing(Pelko::Delay::getUndefined(), Pelko::Delay::getUndefined());
        pllFeedbackStem(feedback, timing);
        if (!timing.isUndefined())
            storeFeedback(*pll, timing);
    }
    loopClose();
    Pelko::analyzer->unmark();
}

void Tool::pllFeedbackStem(Pelko::Pole* pole, Timing& timing) {
    FeedbackVisitor visitor(*this, timing);
    detail::Walk().run(pole, visitor);
}

} // namespace Vorlen
