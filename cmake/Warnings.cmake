# The warnings for the project's own code, as a target to link privately, so that no consumer gets them. At
# -O3, g++ 12 warns of overlaps in the standard library's own string concatenation (its bug 105651): that
# warning is off.
add_library(vorlen_warnings INTERFACE)
target_compile_options(vorlen_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-restrict
    $<$<BOOL:${VORLEN_WERROR}>:-Werror>)
