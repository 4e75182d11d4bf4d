#!/usr/bin/env bash
# After a run of the tests in a build of the preset 'coverage': lists the lines that no test ran, and prints a
# table of the folders. BUILD/coverage/index.html shows the same next to the source.
# Usage: coverage.sh BUILD
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$1
mapfile -t folders < <(cmake/sources.sh --rooms)

filters=()
for folder in "${folders[@]}"; do
    filters+=(--filter "$folder/")
done
rm -rf "$build/coverage"
mkdir "$build/coverage"
# Branches are not counted: most belong to exceptions, and the compiler adds them.
gcovr -j 2 --root . "${filters[@]}" --exclude-throw-branches --exclude-unreachable-branches \
    --txt "$build/coverage/lines.txt" --csv "$build/coverage/lines.csv" --html-details "$build/coverage/index.html" "$build"

echo "Lines that no test ran:"
# A row of lines.txt: the file, its lines, the lines that ran, their percentage, and the lines that did not
# run.
awk '/^-+$/ { rules++; next }
     rules == 3 && NF == 1 { file = $1; next }
     rules == 3 && file != "" { $0 = file " " $0; file = "" }
     rules == 3 && NF > 4 { print "  " $1 ": " $5; some = 1 }
     END { if (!some) print "  none" }' "$build/coverage/lines.txt"
echo
awk -F, -v folders="${folders[*]}" '
    NR > 1 { sub(/\/.*/, "", $1); lines[$1] += $2; run[$1] += $3 }
    function row(name, all, some) { printf "%-10s %8d %8d %8.2f\n", name, all, some, all ? 100 * some / all : 100 }
    END {
        printf "%-10s %8s %8s %8s\n", "folder", "lines", "covered", "%"
        count = split(folders, names, " ")
        for (i = 1; i <= count; ++i) {
            row(names[i], lines[names[i]], run[names[i]])
            all += lines[names[i]]; some += run[names[i]]
        }
        row("all", all, some)
    }' "$build/coverage/lines.csv"
