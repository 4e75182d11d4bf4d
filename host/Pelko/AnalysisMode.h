// Which domains a run analyses: all (exhaustive), or only those between clocks with a required period
// (critical).
#pragma once

#include "Ruvex/Stuff.h"

namespace Pelko {

class PELKO_API AnalysisMode : public Ruvex::Stuff {
public:
    enum Code : unsigned char { Default = 0, Critical = 2, Exhaustive = 3 };

    AnalysisMode() = default;
    AnalysisMode(Code code) : code_(code) {}
    AnalysisMode(const AnalysisMode&) = default;
    AnalysisMode& operator=(const AnalysisMode&) = default;
    ~AnalysisMode() override = default;

    Code getCode() const { return code_; }
    // The mode, with Exhaustive in place of Default.
    AnalysisMode getEffective() const { return code_ == Default ? AnalysisMode(Exhaustive) : *this; }

    // "Default", "Critical", "Exhaustive"
    std::string _getLabel() const override;

private:
    Code code_ = Default;
};

} // namespace Pelko
