#!/usr/bin/env bash
# Every source of a room has a test named after it: exceptions/Govern.cpp has tests/exceptions/Govern_test.cpp. A source
# that another test covers is listed with it in tests/build/covered_elsewhere.txt, as "source: test file" (# begins a
# comment). A listing that is not needed is an error. A header without a source file needs no test of its own.
# Usage: test_names.sh SOURCE_ROOT
#        test_names.sh --list-missing SOURCE_ROOT     prints the sources that have neither, one per line
set -euo pipefail
export LC_ALL=C
mode=check
[ "$1" != --list-missing ] || { mode=list; shift; }
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$1"
list=tests/build/covered_elsewhere.txt
all_sources=$here/../../cmake/sources.sh

{
    "$all_sources" --rooms . | sed 's/^/room /'
    "$all_sources" . | sed 's/^/file /'
    [ ! -f $list ] || awk '{ print "listing", FNR, $0 }' $list
} | awk -v list=$list -v mode=$mode '
    function fail(place, text) { print place ": " text; ++failures }
    function test_of(source) { sub(/\.cpp$/, "_test.cpp", source); return "tests/" source }
    function needs_test(path,    room) { room = path; sub(/\/.*/, "", room); return room in is_room && path ~ /\.cpp$/ }

    $1 == "room" { is_room[$2] = 1; next }
    $1 == "file" { exists[$2] = 1; if (needs_test($2)) sources[++source_count] = $2; next }
    {
        line = $2
        sub(/^listing [0-9]+ */, "")
        sub(/ *#.*/, "")
        if ($0 == "") next
        place = list ":" line
        if (mode == "check" && !($0 ~ /^[^ :]+: [^ :]+$/)) {
            fail(place, "\"" $0 "\", expected \"source: test file\"")
            next
        }
        source = substr($0, 1, index($0, ":") - 1)
        test = substr($0, index($0, ":") + 2)
        if (mode == "check") {
            if (source in listed)
                fail(place, source " is listed twice, expected once")
            else if (!(source in exists) || !needs_test(source))
                fail(place, source " is not a source of a room, expected no listing")
            else if (test_of(source) in exists)
                fail(place, source " has a test of its own, expected no listing")
            if (!(test in exists) || test !~ /^tests\/.*_test\.cpp$/)
                fail(place, test " is not a test file, expected one that covers " source)
        }
        listed[source] = 1
    }
    END {
        for (i = 1; i <= source_count; ++i) {
            source = sources[i]
            if (test_of(source) in exists || source in listed)
                continue
            if (mode == "list")
                print source
            else
                fail(source ":1", "no test, expected " test_of(source) " or a line in " list)
        }
        if (mode == "list") exit 0
        printf "%d sources checked, %d failures\n", source_count, failures
        exit source_count == 0 || failures > 0
    }'
