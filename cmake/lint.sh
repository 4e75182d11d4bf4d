#!/usr/bin/env bash
# Runs clang-tidy with the checks of .clang-tidy over the sources that the build of the preset 'dev' compiles,
# two files at a time. Prints each finding once, and a table of the checks and the folders. Exit status 1 if
# there are findings, 2 if a file could not be checked. It needs clang-tidy 16: clang 14 does not understand
# the ranges of g++ 12's library.
# Usage: lint.sh [FOLDER|FILE]...      default: the folders of the library and the command
set -euo pipefail
export LC_ALL=C
cd "$(dirname "${BASH_SOURCE[0]}")/.."
commands=build/dev/compile_commands.json
for tool in clang-tidy-16 run-clang-tidy-16; do
    command -v $tool >/dev/null || { echo "make lint: $tool is not installed (apt-get install clang-tidy-16)" >&2; exit 2; }
done
[ -f $commands ] || { echo "make lint: no $commands, run: cmake --preset dev" >&2; exit 2; }
[ $# -gt 0 ] || mapfile -t places < <(cmake/sources.sh --rooms)
[ $# -eq 0 ] || places=("$@")

# A database of only these places, with each file once: the engine is compiled into two libraries.
mkdir -p build/lint
awk -v root="$PWD/" -v list="${places[*]}" '
    BEGIN { count = split(list, places, " "); for (i = 1; i <= count; ++i) sub(/\/$/, "", places[i]); print "[" }
    function wanted(file,    i) {
        if (index(file, root) != 1) return 0
        file = substr(file, length(root) + 1)
        for (i = 1; i <= count; ++i)
            if (file == places[i] || index(file, places[i] "/") == 1) return 1
        return 0
    }
    /^{/ { entry = ""; file = "" }
    { entry = entry $0 "\n" }
    /^ *"file": / { file = $0; sub(/^ *"file": "/, "", file); sub(/",?$/, "", file) }
    /^}/ && wanted(file) && !seen[file]++ {
        sub(/,\n$/, "\n", entry)
        printf "%s%s", (some++ ? "," : ""), entry
    }
    END { print "]" }' $commands > build/lint/compile_commands.json
if ! grep -q '"file"' build/lint/compile_commands.json; then
    echo "make lint: no source of the build is in: ${places[*]}" >&2
    exit 2
fi

# clang does not know the warnings of g++. Findings in headers are reported for the project's own headers
# only.
rooms=$(cmake/sources.sh --rooms | tr '\n' '|')
status=0
run-clang-tidy-16 -quiet -p build/lint -j 2 -header-filter "^$PWD/(${rooms}tests|bench|examples)/" \
    -extra-arg=-Wno-unknown-warning-option -extra-arg=-Wno-error > build/lint/log.txt 2> build/lint/errors.txt || status=$?

# The log is in colours, and a finding in a header is reported for each source that includes it.
sed -E 's/\x1B\[[0-9;]*m//g' build/lint/log.txt | awk -v root="$PWD/" '
    match($0, /^[^ ]+:[0-9]+:[0-9]+: (warning|error): .*\[[^]]+\]$/) {
        if (index($0, root) == 1) $0 = substr($0, length(root) + 1)
        while (match($0, /^[^ :]*[^ :\/.]+\/\.\.\//)) sub(/[^\/]+\/\.\.\//, "")
        if (!seen[$0]++) print
    }' | sort -t: -k1,1 -k2,2n > build/lint/findings.txt
cat build/lint/findings.txt
echo
awk '
    {
        folder = $0; sub(/\/.*/, "", folder)
        check = $0; sub(/.*\[/, "", check); sub(/[],].*/, "", check)
        ++count[folder " " check]
        ++total[folder]
    }
    END {
        for (i in count) {
            split(i, part, " ")
            printf "%-12s %-50s %5d\n", part[1], part[2], count[i]
        }
        for (i in total) printf "%-12s %-50s %5d\n", i, "all", total[i]
    }' build/lint/findings.txt | sort -k1,1 -k3,3nr
findings=$(grep -c . build/lint/findings.txt || true)
echo "$(grep -c '"file"' build/lint/compile_commands.json) files, $findings findings"
# clang-tidy also fails on a file that it cannot compile.
if [ "$findings" -eq 0 ] && [ $status -ne 0 ]; then
    tail -n 20 build/lint/errors.txt
    exit 2
fi
[ "$findings" -eq 0 ]
