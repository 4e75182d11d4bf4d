// The clock edge on which a pole or a subdomain works.
//
//   0 None     no clock
//   1 Falling  the edge one high width after the clock's shift
//   2 Rising   the edge at the clock's shift
#pragma once

#include "Ruvex/Stuff.h"

namespace Pelko {

class PELKO_API ClockMode : public Ruvex::Stuff {
public:
    enum Code : unsigned char { None = 0, Falling = 1, Rising = 2 };

    ClockMode() = default;
    ClockMode(Code code) : code_(code) {}
    ClockMode(const ClockMode&) = default;
    ClockMode& operator=(const ClockMode&) = default;
    ~ClockMode() override = default;

    Code getCode() const { return code_; }
    bool operator==(const ClockMode& other) const { return code_ == other.code_; }

    // "none", "falling" or "rising".
    std::string _getLabel() const override;
    Ruvex::Slot* _getSlot() const override;

private:
    Code code_ = None;
};

} // namespace Pelko
