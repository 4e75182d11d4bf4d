// Which times were rounded to the unit of the run: how many, and the finest digit that was lost.
#pragma once

#include "base/Decimal.h"
#include "base/Diagnostics.h"

#include <cstdint>

namespace Base {

class Rounding {
public:
    // value * 10^power seconds in units of 10^scale s. placeOf is called for the first value that is rounded.
    template <class PlaceOf>
    void look(const Decimal& value, int power, int scale, PlaceOf placeOf) {
        if (value.exponent + power < scale) // most values end here
            if (const int last = value.lastPower() + power; last < scale && !value.isZero())
                add(last, placeOf);
    }

    std::uint64_t count() const { return count_; }
    // A note with the number of values and the --resolution that keeps them all; none if nothing was rounded.
    void report(int scale, Diagnostics& diagnostics) const;

private:
    template <class PlaceOf>
    void add(int last, PlaceOf placeOf) {
        if (count_++ == 0)
            first_ = placeOf();
        finest_ = last < finest_ ? last : finest_;
    }

    std::uint64_t count_ = 0;
    int finest_ = 0; // the power of ten of a second
    Place first_;
};

} // namespace Base
