// What a host supplies so that this suite can run on it: how a design is built, and its constraints are set.
// All that an analysis itself uses, and what reads its results back, is called by its own name in the tests.
//
// To run the suite on another host, implement this class against it in the place of ModelDesign.cpp.
#pragma once

#include "Pelko/Analyzer.h"
#include "Pelko/Application.h"
#include "Pelko/Cell.h"
#include "Pelko/Edge.h"
#include "Pelko/Module.h"
#include "Pelko/Subdomain.h"

#include <memory>
#include <string>
#include <vector>

namespace Contract {

class Design {
public:
    using PoleList = std::vector<Pelko::Pole*>;

    // An empty design as the globals cell, analyzer and application; it ends with the object.
    static std::unique_ptr<Design> create();
    virtual ~Design() = default;

    // Poles: of no kind | input and initial | output and terminal | clock source and initial.
    virtual Pelko::Pole* addPole(const std::string& name) = 0;
    virtual Pelko::Pole* addInput(const std::string& name) = 0;
    virtual Pelko::Pole* addOutput(const std::string& name) = 0;
    virtual Pelko::Pole* addClockSource(const std::string& name) = 0;
    // The main pole of a pin of its own, clock and initial.
    virtual Pelko::Pole* addClock(const std::string& name, const Pelko::ClockMode& mode) = 0;
    // The data side of a setup and hold check at that clock pole: an auxiliary pole of its pin, check and
    // terminal.
    virtual Pelko::Pole* addCheck(Pelko::Pole* clock, const std::string& name) = 0;
    virtual Pelko::Edge* addEdge(Pelko::Pole* source, Pelko::Pole* target, int minimum, int maximum) = 0;

    virtual Pelko::Instance* addInstance(const std::string& name) = 0;
    virtual Pelko::PLL* addPLL(const std::string& name, bool feedbackCompensation) = 0;
    virtual Pelko::WFG* addWFG(const std::string& name, bool feedback) = 0;
    virtual Pelko::Pin* addPin(Pelko::Instance* instance, const std::string& name) = 0;
    // A net driven by one pin, and received by the others in this order.
    virtual Pelko::Net* addNet(Pelko::Pin* driver, const std::vector<Pelko::Pin*>& receivers) = 0;

    virtual void setClock(Pelko::Pole* root, int period, int shift, int highWidth, int lowWidth) = 0;
    virtual void setInputConstraint(Pelko::Pole* pole, const Pelko::IOConstraint& constraint) = 0;
    virtual void setOutputConstraint(Pelko::Pole* pole, const Pelko::IOConstraint& constraint) = 0;
    virtual void separate(Pelko::Pole* a, Pelko::Pole* b, bool exclusive) = 0; // else asynchronous

    virtual Pelko::FPath* addFalsePath(const PoleList& sources, const PoleList& targets, bool insulated) = 0;
    virtual Pelko::DPath* addDelayPath(const PoleList& sources, const PoleList& targets, int delay,
                                       bool maximum) = 0;
    virtual Pelko::MPath* addMulticycle(const PoleList& sources, const PoleList& targets,
                                        unsigned long cycles) = 0;
};

} // namespace Contract
