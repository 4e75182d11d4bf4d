// All texts that the library prints. Messages go to the console with an empty label. The analyzer's `_muted`
// silences warnings and remarks, except the remark of the epilogue.
#pragma once

namespace Vorlen::detail::messages {

// The banner; the alias and the mode are put between these.
inline constexpr const char* bannerOpening = "Analyzing project with ";
inline constexpr const char* bannerMode = " [";
inline constexpr const char* bannerClosing = " mode]";
// The closing line; the status is put between these. The console replaces the percent sign by the elapsed
// time.
inline constexpr const char* closingOpening = "Analyzing project ";
inline constexpr const char* closingTime = " in %";
// The end of a run by an interruption, whose message is put between these.
inline constexpr const char* abortedOpening = "Analyzing aborted [";
inline constexpr const char* abortedClosing = "]";

// Debug mode.
inline constexpr const char* creatingDomains = "Creating domains";
inline constexpr const char* creatingDomainsDone = "Creating domains ... done";

// "Generated clock <root> by <source>"
inline constexpr const char* generatedClock = "Generated clock ";
inline constexpr const char* generatedClockBy = " by ";

// Follows the alias of a domain.
inline constexpr const char* intermediateClock =
    ": Listed timing path(s) may traverse intermediate clock timing point(s)!";

// Put between the aliases of a multicycle path and a subdomain. Debug mode.
inline constexpr const char* multicycleNotAvailable = " is not available for ";

// The loops of a walk: the text for one loop, and the text that follows the number of several.
struct LoopWarning {
    const char* one;
    const char* several;
};
inline constexpr LoopWarning clockLoops{"1 combinatorial loop detected during clock paths analysis.",
                                        " combinatorial loops detected during clock paths analysis."};
inline constexpr LoopWarning dataLoops{"1 combinatorial loop detected during data domain analysis.",
                                       " combinatorial loops detected during data domain analysis."};
inline constexpr LoopWarning constrainedLoops{"1 combinatorial loop detected during false paths analysis.",
                                              " combinatorial loops detected during false paths analysis."};

// Prints the warning if the count is not 0, unless muted.
void warnOfLoops(const LoopWarning& warning, unsigned long count);

} // namespace Vorlen::detail::messages
