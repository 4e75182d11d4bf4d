// The prolog: makes the arcs of insulated false paths inactive, gives every exception a class of its own, and
// measures PLL feedback.
#include "Pelko/Analyzer.h"
#include "Pelko/Pole.h"
#include "Vorlen/Tool.h"
#include "Vorlen/detail/Faults.h"

namespace Vorlen {

using Pelko::analyzer;

namespace {

void insulateFalsePaths() {
    for (Pelko::FPath* path : analyzer->getFalsePaths())
        if (path->isInsulated())
            for (Pelko::Pole* pole : path->getPoles())
                pole->insulate();
}

// Adds the class of the exception to the analyzer's mask of its kind, if there is one.
void joinClassMask(Pelko::CPath* path) {
    const Pelko::PseudoMask& mask = path->getPseudoMask();
    if (dynamic_cast<Pelko::FPath*>(path)) {
        analyzer->setFalsePathMask(analyzer->getFalsePathMask() | mask);
    } else if (const auto* delayPath = dynamic_cast<Pelko::DPath*>(path)) {
        if (delayPath->isMaximum())
            analyzer->setMaxdelayPathMask(analyzer->getMaxdelayPathMask() | mask);
        else
            analyzer->setMindelayPathMask(analyzer->getMindelayPathMask() | mask);
    } else if (dynamic_cast<Pelko::MPath*>(path)) {
        analyzer->setMulticyclePathMask(analyzer->getMulticyclePathMask() | mask);
    }
}

} // namespace

void Tool::prolog() {
    detail::require(analyzer, detail::Fault::NullAnalyzer);
    reset();
    insulateFalsePaths();
    const Ruvex::Collection<Pelko::CPath*> paths = analyzer->getCPaths();
    Pelko::PseudoMask::reset(paths.getCount());
    unsigned long number = 0;
    for (Pelko::CPath* path : paths) {
        path->setPseudoMask(Pelko::PseudoMask::getBasic(++number));
        joinClassMask(path);
    }
    pllFeedbackStem();
}

} // namespace Vorlen
