// The values of an entry in units: which member of a triple counts, and what a list of values says of each
// edge.
#include "readers/sdf/Values.h"
#include "readers/sdf/Annotate.h"

#include <algorithm>

namespace Readers {

namespace {

const Base::Decimal* firstOf(const std::optional<Base::Decimal>& a, const std::optional<Base::Decimal>& b,
                             const std::optional<Base::Decimal>& c) {
    return a ? &*a : b ? &*b : c ? &*c : nullptr;
}

const Base::Decimal* pick(const Sdf::Value& value, Corner corner) {
    switch (corner) {
    case Corner::minimum:
        return firstOf(value.minimum, value.typical, value.maximum);
    case Corner::typical:
        return firstOf(value.typical, value.maximum, value.minimum);
    default:
        return firstOf(value.maximum, value.typical, value.minimum);
    }
}

Corner earlyCorner(Corner corner) { return corner == Corner::minmax ? Corner::minimum : corner; }
Corner lateCorner(Corner corner) { return corner == Corner::minmax ? Corner::maximum : corner; }

// As it was written: once is enough to look at it.
bool isSame(const Base::Decimal& a, const Base::Decimal& b) {
    return a.mantissa == b.mantissa && a.exponent == b.exponent;
}

} // namespace

// --- Values ---

std::int32_t Annotator::toUnits(const Base::Decimal& value, Base::Position where) {
    rounding_.look(value, fileScale_, options_.scale, [&] { return where.in(file_); });
    const std::optional<std::int64_t> units = value.scaled(fileScale_ - options_.scale);
    if (!units || *units > largestValue || *units < -largestValue)
        throw Base::BadInput(where.in(file_),
                             "the value " + value.toString() + " does not fit: expected at most " +
                                 std::to_string(largestValue) + " units of 1e" +
                                 std::to_string(options_.scale) + " s; a coarser --resolution may help");
    return static_cast<std::int32_t>(*units);
}

Design::Interval Annotator::intervalOf(const Sdf::Value& value, Base::Position where) {
    const Base::Decimal& early = *pick(value, earlyCorner(options_.corner));
    const Base::Decimal& late = *pick(value, lateCorner(options_.corner));
    Design::Interval interval;
    interval.early = toUnits(early, where);
    interval.late = isSame(early, late) ? interval.early : toUnits(late, where);
    if (interval.early > interval.late) {
        std::swap(interval.early, interval.late);
        count("triples whose minimum is above their maximum (exchanged)", Base::Severity::warning, where);
    }
    return interval;
}

// Rise and fall together: the first two values. A list that gives neither of them, but the times in which an
// output is switched on, is of these. Nothing if there is no value.
std::optional<Annotator::Given> Annotator::givenBy(std::span<const Sdf::Value> values, Base::Position where) {
    constexpr std::size_t fromOff[2] = {3, 5}; // z1 and z0 of 6 or 12 values
    std::optional<Given> given;
    const auto add = [&](std::size_t at, bool rises, bool falls) {
        if (at >= values.size() || values[at].isEmpty())
            return;
        const Design::Interval one = intervalOf(values[at], where);
        if (!given)
            given = Given{one, false, false};
        widen(given->delay, one);
        given->rises |= rises;
        given->falls |= falls;
    };
    add(0, true, values.size() == 1);
    add(1, false, true);
    if (given)
        return given;
    add(fromOff[0], true, false);
    add(fromOff[1], false, true);
    return given;
}

std::optional<Design::Interval> Annotator::intervalOf(std::span<const Sdf::Value> values,
                                                      Base::Position where) {
    const std::optional<Given> given = givenBy(values, where);
    return given ? std::optional(given->delay) : std::nullopt;
}

std::optional<std::int32_t> Annotator::checkValue(const Sdf::Value& value, Base::Position where) {
    if (value.isEmpty())
        return std::nullopt;
    if (options_.corner != Corner::minmax)
        return toUnits(*pick(value, options_.corner), where);
    std::optional<std::int32_t> largest;
    const Base::Decimal* before = nullptr;
    for (const std::optional<Base::Decimal>* member : {&value.minimum, &value.typical, &value.maximum})
        if (*member && (!before || !isSame(**member, *before))) {
            before = &**member;
            largest = std::max(largest.value_or(INT32_MIN), toUnits(*before, where));
        }
    return largest;
}

} // namespace Readers
