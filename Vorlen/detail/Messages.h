// Every text that the library prints, once. Messages go to the console with an empty label; warnings and
// remarks are silenced by the analyzer's `_muted`, but for the epilogue's remark.
#pragma once

namespace Vorlen::detail::messages {

// Banner: alias and mode between these.
inline constexpr const char* bannerOpening = "Analyzing project with ";
inline constexpr const char* bannerMode = " [";
inline constexpr const char* bannerClosing = " mode]";
// Closing line: the status between these; the console puts the elapsed time for the percent sign.
inline constexpr const char* closingOpening = "Analyzing project ";
inline constexpr const char* closingTime = " in %";
// An interruption's message between these.
inline constexpr const char* abortedOpening = "Analyzing aborted [";
inline constexpr const char* abortedClosing = "]";

// Debug mode.
inline constexpr const char* creatingDomains = "Creating domains";
inline constexpr const char* creatingDomainsDone = "Creating domains ... done";

// "Generated clock <root> by <source>"
inline constexpr const char* generatedClock = "Generated clock ";
inline constexpr const char* generatedClockBy = " by ";

// Behind a domain's alias.
inline constexpr const char* intermediateClock =
    ": Listed timing path(s) may traverse intermediate clock timing point(s)!";

// Between a multicycle path's alias and a subdomain's. Debug mode.
inline constexpr const char* multicycleNotAvailable = " is not available for ";

// The loops met by a walk: the text for one, and the text behind the number of several.
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

// Prints the warning for a count that is not 0, unless muted.
void warnOfLoops(const LoopWarning& warning, unsigned long count);

} // namespace Vorlen::detail::messages
