// Instances: the design objects that own pins. Two kinds matter to clock walks: PLLs, and the waveform
// generators that they drive.
#pragma once

#include "Pelko/Object.h"
#include "Ruvex/Collections.h"

#include <map>

namespace Pelko {

class Module;
class Pin;

class PELKO_API Instance : public Object {
public:
    // An instance of the module, without pins. FactoryFailed: "Null module", "Empty instance name", "Instance
    // exists already".
    static Instance* create(Module* module, const std::string& name);

    const std::string& getName() const { return name_; }
    // The pin of this name, or null. Logarithmic.
    Pin* getPin(const std::string& name) const;
    // All pins, in order of names.
    Ruvex::Collection<Pin*> getPins() const { return Ruvex::MapCollection<std::string, Pin*>(pins_); }
    Module* getModule() const { return module_; }

    std::string getClass() const override;
    std::string getAlias() const override { return name_; }
    // Instances are destroyed only with their module.
    bool isDestroyable() const override { return false; }

    ~Instance() override;

protected:
    Instance(Module* module, const std::string& name) : module_(module), name_(name) {}
    static void preCreate(const Module* module, const std::string& name);
    void postCreate();

private:
    friend class Pin;

    Module* module_;
    std::string name_;
    std::map<std::string, Pin*> pins_;
};

// A PLL. The walks look for its pins "FBK", the feedback input, and "VCO", the oscillator output.
class PELKO_API PLL : public Instance {
public:
    static PLL* create(Module* module, const std::string& name);

    // Whether the PLL compensates the delay of its feedback path. Default: off.
    bool hasFeedbackCompensation() const { return feedbackCompensation_; }
    void setFeedbackCompensation(bool set) { feedbackCompensation_ = set; }

    std::string getClass() const override;
    ~PLL() override;

private:
    using Instance::Instance;

    bool feedbackCompensation_ = false;
};

// A waveform generator. Its output is the pin "ZO".
class PELKO_API WFG : public Instance {
public:
    static WFG* create(Module* module, const std::string& name);

    // Whether the feedback of a PLL starts at the output. Default: off.
    bool hasPLLFeedback() const { return pllFeedback_; }
    void setPLLFeedback(bool set) { pllFeedback_ = set; }

    std::string getClass() const override;
    ~WFG() override;

private:
    using Instance::Instance;

    bool pllFeedback_ = false;
};

} // namespace Pelko
