// What a host supplies so that this suite can run on it: operations that build a design and set its
// constraints. The tests call everything that an analysis itself uses, or that reads its results back,
// directly.
//
// To run the suite on another host, implement this class for it and replace ModelDesign.cpp.
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

    // Creates an empty design as the globals cell, analyzer and application, which are destroyed with the
    // object.
    static std::unique_ptr<Design> create();
    virtual ~Design() = default;

    // A pole of no kind.
    virtual Pelko::Pole* addPole(const std::string& name) = 0;
    // An input port; initial.
    virtual Pelko::Pole* addInput(const std::string& name) = 0;
    // An output port; terminal.
    virtual Pelko::Pole* addOutput(const std::string& name) = 0;
    // A clock source; initial.
    virtual Pelko::Pole* addClockSource(const std::string& name) = 0;
    // A clock pole; initial. It is the main pole of a new pin.
    virtual Pelko::Pole* addClock(const std::string& name, const Pelko::ClockMode& mode) = 0;
    // The data side of a setup and hold check at that clock pole: a check; terminal. It is an auxiliary pole
    // of the clock's pin.
    virtual Pelko::Pole* addCheck(Pelko::Pole* clock, const std::string& name) = 0;
    virtual Pelko::Edge* addEdge(Pelko::Pole* source, Pelko::Pole* target, int minimum, int maximum) = 0;

    virtual Pelko::Instance* addInstance(const std::string& name) = 0;
    virtual Pelko::PLL* addPLL(const std::string& name, bool feedbackCompensation) = 0;
    virtual Pelko::WFG* addWFG(const std::string& name, bool feedback) = 0;
    virtual Pelko::Pin* addPin(Pelko::Instance* instance, const std::string& name) = 0;
    // A net with one driver, and the receivers in this order.
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
