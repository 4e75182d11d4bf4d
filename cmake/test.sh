#!/usr/bin/env bash
# Configures, builds and tests the presets named, stopping at the first that fails, and ends with one line for each.
# Usage: test.sh PRESET...
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
totals=()

# total PRESET SECONDS: what the last test run of a preset's build ran. A test that lacks a tool passes, and says so.
total() {
    local log=build/$1/Testing/Temporary/LastTest.log
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
    ' "$log"
}

for preset; do
    cmake --preset "$preset" && cmake --build --preset "$preset" || exit 1
    started=$SECONDS
    ctest --preset "$preset"
    status=$?
    totals+=("$(total "$preset" $((SECONDS - started)))")
    [ $status -eq 0 ] || break
done
printf '%s\n' "${totals[@]}"
exit $status
