#!/usr/bin/env bash
# test_names.sh on a tree in order, and on one with each kind of slip.
# Usage: test_names_test.sh
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
. "$here/planted.sh"
check=(bash "$here/test_names.sh" "$tree")
list=tests/build/covered_elsewhere.txt

fill() {
    fresh
    plant design/Netlist.cpp
    plant design/Header.h
    plant readers/sdc/Reader.cpp
    plant cli/main.cpp
    plant tests/design/Netlist_test.cpp
    plant tests/readers/sdc/Reader_test.cpp
    plant tests/cli/Process_test.cpp
    plant tests/cli/Helpers.cpp
    plant tests/support/Files.cpp
    plant bench/any_bench.cpp
    plant $list '# a comment' '' 'cli/main.cpp: tests/cli/Process_test.cpp  # as a process'
}

fill
verify "in order" "${check[@]}"

fill
plant model/Poles.cpp
plant tests/Poles_test.cpp
plant readers/sdc/Options.cpp
plant tests/sdc/Options_test.cpp
expect "model/Poles.cpp:1: no test, expected tests/model/Poles_test.cpp or a line in $list" \
    "readers/sdc/Options.cpp:1: no test, expected tests/readers/sdc/Options_test.cpp or a line in $list"
verify "no test, or one in another folder" "${check[@]}"
same "--list-missing" $'model/Poles.cpp\nreaders/sdc/Options.cpp' "$(bash "$here/test_names.sh" --list-missing "$tree")"

fill
rm "$tree/$list"
expect "cli/main.cpp:1: no test, expected tests/cli/main_test.cpp or a line in $list"
verify "without a list" "${check[@]}"

fill
plant $list 'cli/main.cpp: tests/cli/Process_test.cpp' 'cli/main.cpp: tests/cli/Process_test.cpp' \
    'design/Netlist.cpp: tests/cli/Process_test.cpp' 'design/Gone.cpp: tests/cli/Process_test.cpp' \
    'design/Header.h: tests/cli/Process_test.cpp' 'bench/any_bench.cpp: tests/cli/Process_test.cpp' 'cli/main.cpp'
expect "$list:2: cli/main.cpp is listed twice, expected once" \
    "$list:3: design/Netlist.cpp has a test of its own, expected no listing" \
    "$list:4: design/Gone.cpp is not a source of a room, expected no listing" \
    "$list:5: design/Header.h is not a source of a room, expected no listing" \
    "$list:6: bench/any_bench.cpp is not a source of a room, expected no listing" \
    "$list:7: \"cli/main.cpp\", expected \"source: test file\""
verify "listings that are not needed" "${check[@]}"

fill
plant model/Poles.cpp
plant $list 'cli/main.cpp: tests/cli/Helpers.cpp' 'model/Poles.cpp: tests/model/Gone_test.cpp'
expect "$list:1: tests/cli/Helpers.cpp is not a test file, expected one that covers cli/main.cpp" \
    "$list:2: tests/model/Gone_test.cpp is not a test file, expected one that covers model/Poles.cpp"
verify "test files that do not exist" "${check[@]}"

[ $failures -eq 0 ] || exit 1
