// The delays at ports, as set_input_delay and set_output_delay leave them.
//
// A port has one entry per clock edge. The rising and the falling data edge may be given apart; they are kept
// apart here, and the worse of both is handed out.
#pragma once

#include "design/Constraints.h"

#include <array>
#include <optional>
#include <unordered_map>
#include <vector>

namespace Readers::Sdc {

class PortDelays {
public:
    // One command's values for one port.
    struct Setting {
        Design::PortDelay entry; // without min and max
        Base::Decimal value;
        bool min = true, max = true;
        bool rise = true, fall = true;
        bool add = false; // -add_delay
    };

    void set(const Setting& setting);
    // Drops the entries that refer to the clock, and returns how many.
    std::size_t forgetClock(Design::ClockId clock);
    std::vector<Design::PortDelay> take() const;

private:
    struct Entry {
        Design::PortDelay delay;
        std::array<std::optional<Base::Decimal>, 2> min, max; // rise, fall
        bool live = true;
    };

    Entry& entryFor(const Setting& setting, std::vector<std::size_t>& ofPort);

    std::vector<Entry> entries_;
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> byPort_; // pin and direction -> live entries
};

// Compares by value, with the precision of a double.
bool isLess(const Base::Decimal& a, const Base::Decimal& b);

} // namespace Readers::Sdc
