#!/usr/bin/env bash
# Configures, builds and tests the given presets, and stops at the first that fails. Prints a table of the
# wall-clock times and one line per preset at the end.
# Usage: test.sh PRESET...
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
totals=()
times=()
SECONDS=0

log_of() { echo "build/$1/Testing/Temporary/LastTest.log"; }

# total PRESET SECONDS: the sum of the last test run of a preset. A test that lacks a tool passes, and reports
# this.
total() {
    awk -v preset="$1" -v seconds="$2" '
        /^[0-9]+\/[0-9]+ Testing: / { tests++ }
        /^Test Passed\.$/ { passed++ }
        /^skipped: / { skipped++ }
        /^\[==========\] [0-9]+ tests? from .* ran\./ { cases += $2 }
        END {
            printf "%s: %d tests passed, %d failed", preset, passed - skipped, tests - passed
            if (skipped) printf ", %d skipped", skipped
            printf " (%d cases, %d s)\n", cases, seconds
        }
    ' "$(log_of "$1")"
}

row() { printf '%-44s %7s\n' "$1" "$2"; }

# programs PRESET: a row for each test of the last run, the longest first.
programs() {
    awk '
        /^[0-9]+\/[0-9]+ Testing: / { name = $3 }
        /^Test time = +[0-9.]+ sec$/ { printf "%.0f %s\n", $4, name }
    ' "$(log_of "$1")" | sort -k1,1nr -k2 | while read -r seconds name; do
        row "        $name" "$seconds"
    done
}

# Tests run in parallel, so the sum over the tests of a preset is greater than the time it took.
report() {
    row "seconds of" ""
    printf '%s\n' "${times[@]}"
    row "all" $SECONDS
    [ ${#totals[@]} -eq 0 ] || printf '%s\n' "${totals[@]}"
}

status=0
for preset; do
    started=$SECONDS
    cmake --preset "$preset" && cmake --build --preset "$preset" || status=1
    times+=("$(row "$preset: configuring and building" $((SECONDS - started)))")
    [ $status -eq 0 ] || break
    started=$SECONDS
    ctest --preset "$preset"
    status=$?
    took=$((SECONDS - started))
    times+=("$(row "$preset: testing" $took)" "$(programs "$preset")")
    totals+=("$(total "$preset" $took)")
    [ $status -eq 0 ] || break
done
report
exit $status
