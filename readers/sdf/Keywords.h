// The words of SDF. Their case does not matter.
#pragma once

#include <cstdint>
#include <string_view>

namespace Readers::Sdf {

enum class Keyword : std::uint8_t {
    none, // no keyword
    absolute,
    bidirectSkew,
    ccond,
    cell,
    cellType,
    cond,
    condElse,
    correlation,
    date,
    delay,
    delayFile,
    design,
    device,
    diff,
    divider,
    globalPathPulse,
    hold,
    increment,
    instance,
    interconnect,
    ioPath,
    label,
    negedge,
    netDelay,
    noChange,
    pathConstraint,
    pathPulse,
    pathPulsePercent,
    period,
    periodConstraint,
    port,
    posedge,
    process,
    program,
    recovery,
    recrem,
    removal,
    retain,
    scond,
    sdfVersion,
    setup,
    setupHold,
    skew,
    skewConstraint,
    sum,
    temperature,
    timeScale,
    timingCheck,
    timingEnvironment,
    vendor,
    version,
    voltage,
    width,
};

Keyword keywordOf(std::string_view text);
// As it is usually written.
std::string_view toString(Keyword keyword);

} // namespace Readers::Sdf
