#!/usr/bin/env bash
# What cmake/test.sh prints at its end, with a cmake and a ctest that do nothing and the logs of runs that there were not.
# Usage: times.sh SOURCE_ROOT
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder"/{cmake,bin}
cp "$1/cmake/test.sh" "$folder/cmake"

# fake NAME STATUS PRESET: a program that fails for one preset.
fake() { printf '#!/bin/sh\ncase "$*" in *%s*) exit %s ;; esac\n' "$3" "$2" > "$folder/bin/$1"; chmod +x "$folder/bin/$1"; }

# log PRESET: of one test that passes, one that fails and one that lacks a tool.
log() {
    mkdir -p "$folder/build/$1/Testing/Temporary"
    cat > "$folder/build/$1/Testing/Temporary/LastTest.log" <<'LOG'
1/3 Testing: short_tests
[==========] 12 tests from 3 test suites ran. (5 ms total)
Test time =   2.40 sec
----------------------------------------------------------
Test Passed.
2/3 Testing: long_tests
[==========] 1 test from 1 test suite ran. (5 ms total)
Test time = 130.60 sec
----------------------------------------------------------
Test Failed.
3/3 Testing: no_tool
skipped: no tool
Test time =   0.01 sec
----------------------------------------------------------
Test Passed.
LOG
}
log one
log two

# The steps take no time; a second may pass all the same.
run() {
    PATH=$folder/bin:$PATH bash "$folder/cmake/test.sh" "$@" 2>&1 |
        sed -E 's/( (configuring and building|testing)|^all) +[01]$/\1 -/; s/, [01] s\)/, - s)/; s/ +$//'
}
programs='        long_tests                               131
        short_tests                                2
        no_tool                                    0'
total='1 tests passed, 1 failed, 1 skipped (13 cases, - s)'

failures=0
# same NAME EXPECTED FOUND
same() {
    [ "$2" = "$3" ] && return
    printf 'FAIL: %s\nexpected:\n%s\nfound:\n%s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
}

fake cmake 0 none
fake ctest 0 none
same "both presets" "seconds of
one: configuring and building -
one: testing -
$programs
two: configuring and building -
two: testing -
$programs
all -
one: $total
two: $total" "$(run one two)"

fake ctest 8 one
same "the first one's tests fail" "seconds of
one: configuring and building -
one: testing -
$programs
all -
one: $total" "$(run one two)"

fake ctest 0 none
fake cmake 1 two
same "the second one does not build" "seconds of
one: configuring and building -
one: testing -
$programs
two: configuring and building -
all -
one: $total" "$(run one two)"

[ $failures -eq 0 ] || exit 1
