# The warnings for the project's own code, as a target to link privately. Nothing of it reaches a consumer.
# g++ 12 sees overlaps in the standard library's own string concatenation at -O3 (its bug 105651): that one is off.
add_library(vorlen_warnings INTERFACE)
target_compile_options(vorlen_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-restrict
    $<$<BOOL:${VORLEN_WERROR}>:-Werror>)
