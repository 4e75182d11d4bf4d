#!/usr/bin/env bash
# What cmake/build_times.sh prints of a log that ninja did not write.
# Usage: build_times.sh SOURCE_ROOT
root=$(cd "$1" && pwd)
. "$(dirname "${BASH_SOURCE[0]}")/planted.sh"

# entry START END OUTPUT
entry() { printf '%s\t%s\t1700000000000000000\t%s\tabcdef0123456789\n' "$1" "$2" "$3"; }
for file in design/A.cpp design/deep/B.cpp tests/design/A_test.cpp tests/main.cpp tests/fuzz/run.cpp; do plant $file; done
mkdir -p "$tree/build/dev" "$tree/cmake"
cp "$root/cmake/build_times.sh" "$tree/cmake"
run() { bash "$tree/cmake/build_times.sh" "$@" 2>&1 | sed -E 's/ +$//' || true; }

same "no log" "build_times: no build/dev/.ninja_log, run: cmake --preset dev && cmake --build --preset dev" "$(run)"

# A file that was compiled twice, a library, one file in two targets, and a file that has been deleted.
{
    printf '# ninja log v5\n'
    entry 0 9000 CMakeFiles/vorlen_design.dir/design/A.cpp.o
    entry 0 1500 CMakeFiles/vorlen_design.dir/design/A.cpp.o
    entry 100 600 CMakeFiles/vorlen_design.dir/design/deep/B.cpp.o
    entry 600 900 libvorlen_design.a
    entry 900 6900 tests/CMakeFiles/design_tests.dir/design/A_test.cpp.o
    entry 900 1900 tests/CMakeFiles/design_tests.dir/main.cpp.o
    entry 900 1900 tests/fuzz/CMakeFiles/model_tests.dir/__/main.cpp.o
    entry 900 9900 tests/CMakeFiles/design_tests.dir/design/Gone_test.cpp.o
} > "$tree/build/dev/.ninja_log"
header='Compilations of the preset dev, seconds by the clock on the wall (build/dev/.ninja_log)

target                    files  seconds      %
design_tests                  2      7.0   70.0
vorlen_design                 2      2.0   20.0
model_tests                   1      1.0   10.0
all                           5     10.0

slowest'
same "three files" "$header
     6.0  tests/design/A_test.cpp (design_tests)
     1.5  design/A.cpp (vorlen_design)
     1.0  tests/main.cpp (design_tests)" "$(run dev 3)"
same "all files" "$header
     6.0  tests/design/A_test.cpp (design_tests)
     1.5  design/A.cpp (vorlen_design)
     1.0  tests/main.cpp (design_tests)
     1.0  tests/fuzz/../main.cpp (model_tests)
     0.5  design/deep/B.cpp (vorlen_design)" "$(run)"

[ $failures -eq 0 ] || exit 1
