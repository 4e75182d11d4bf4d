// The state of a run. The label completes the sentence "Analyzing project … in 1.234 s".
#pragma once

#include "Ruvex/Stuff.h"

namespace Ruvex {

class RUVEX_API Status : public Stuff {
public:
    enum Code : unsigned char { Unknown = 0, Ready = 1, Running = 2, Completed = 3 };

    Status(Code code) : code_(code) {}
    Status(const Status&) = default;
    Status& operator=(const Status&) = default;
    ~Status() override;

    Code getCode() const { return code_; }
    // "unknown", "ready", "not completed" (for Running) or "completed".
    std::string _getLabel() const override;

private:
    Code code_;
};

} // namespace Ruvex
