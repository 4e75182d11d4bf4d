#!/usr/bin/env bash
# What cmake/lint.sh prints of findings that there were not, with a linter that prints a given log.
# Usage: lint_table.sh SOURCE_ROOT
root=$(cd "$1" && pwd)
. "$(dirname "${BASH_SOURCE[0]}")/planted.sh"
mkdir -p "$folder/bin" "$tree/cmake" "$tree/build/dev"
cp "$root"/cmake/{lint,sources}.sh "$tree/cmake"
for file in design/A.cpp design/A.h model/B.cpp tests/model/B_test.cpp; do plant $file; done

# The linter prints the log and the sources of the database it was given.
cat > "$folder/bin/run-clang-tidy-16" <<'TOOL'
#!/bin/sh
cat log.txt
sed -n 's/.*"file": "\(.*\)".*/\1/p' build/lint/compile_commands.json > build/lint/seen.txt
echo "cannot compile" >&2
exit $(cat status.txt)
TOOL
printf '#!/bin/sh\n' > "$folder/bin/clang-tidy-16"
chmod +x "$folder"/bin/*

# The status, and what was printed.
run() { (cd "$tree" && status=0 && PATH=$folder/bin:$PATH bash cmake/lint.sh "$@" 2>&1 || status=$?; echo "status $status"); }
# entry FILE: one of a compilation database.
entry() { printf '{\n  "directory": "%s",\n  "command": "c++ -c",\n  "file": "%s/%s"\n}' "$tree" "$tree" "$1"; }

same "no database" 'make lint: no build/dev/compile_commands.json, run: cmake --preset dev
status 2' "$(run)"
{ echo '['; entry design/A.cpp; echo ,; entry model/B.cpp; echo ,; entry design/A.cpp; echo ,; entry tests/model/B_test.cpp; echo; echo ']'; } \
    > "$tree/build/dev/compile_commands.json"

: > "$tree/log.txt"
echo 0 > "$tree/status.txt"
same "no findings" '
2 files, 0 findings
status 0' "$(run)"
same "each file once, none of the tests" "$tree/design/A.cpp
$tree/model/B.cpp" "$(cat "$tree/build/lint/seen.txt")"
run tests model/B.cpp >/dev/null
same "places" "$tree/model/B.cpp
$tree/tests/model/B_test.cpp" "$(cat "$tree/build/lint/seen.txt")"
same "no such place" 'make lint: no source of the build is in: cli
status 2' "$(run cli)"

echo 1 > "$tree/status.txt"
same "a file that does not compile" 'cannot compile
status 2' "$(run | tail -n 2)"
printf '%s\n' "clang-tidy -p" $'\e[1m'"$tree/design/A.h:3:1: "$'\e[0m'"warning: w1 [misc-a]" "  int a;" "$tree/design/A.h:3:1: warning: w1 [misc-a]" \
    "$tree/design/A.cpp:10:1: warning: w2 [misc-b,misc-alias]" "$tree/model/../design/A.cpp:2:1: warning: w3 [misc-a]" \
    "$tree/model/B.cpp:2:1: error: w4 [clang-diagnostic-error]" > "$tree/log.txt"
same "findings" 'design/A.cpp:2:1: warning: w3 [misc-a]
design/A.cpp:10:1: warning: w2 [misc-b,misc-alias]
design/A.h:3:1: warning: w1 [misc-a]
model/B.cpp:2:1: error: w4 [clang-diagnostic-error]

design       all                                                    3
design       misc-a                                                 2
design       misc-b                                                 1
model        all                                                    1
model        clang-diagnostic-error                                 1
2 files, 4 findings
status 1' "$(run)"

[ $failures -eq 0 ] || exit 1
