# The warnings for the project's own code, as a target to link privately, so that no consumer gets them. At
# -O3, g++ 12 warns of overlaps in the standard library's own string concatenation (its bug 105651): that
# warning is off. With precompiled headers it reports accesses beyond an array there as well (three warnings);
# builds without them, release and coverage, check for these.
add_library(vorlen_warnings INTERFACE)
target_compile_options(vorlen_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-restrict
    "$<$<NOT:$<BOOL:${CMAKE_DISABLE_PRECOMPILE_HEADERS}>>:-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread>"
    $<$<BOOL:${VORLEN_WERROR}>:-Werror>)
