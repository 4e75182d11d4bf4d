#!/usr/bin/env bash
# What each room may include. Data flows down the list of rooms, and no arrow points up. Every quoted include is written
# from the root ("design/Design.h") or, for the host's headers, from host/ ("Pelko/Pole.h"), and names a header that
# exists.
# Tests, benchmarks and examples may include what they like, except by "../".
# Usage: layers.sh SOURCE_ROOT
#        layers.sh --rules          prints the rules, one "from to" per line
set -euo pipefail
export LC_ALL=C

# One rule for each allowed arrow: a room, and the folder or the header that it may include in addition to its own
# folder. A rule that no include needs is an error: delete it.
: <<'RULES'
Vorlen     -> host
base       -> host/Pelko/detail     # large pages
design     -> base
readers    -> base
readers    -> design
model      -> base
model      -> design
model      -> host
exceptions -> base
exceptions -> design
exceptions -> model
exceptions -> host
analysis   -> base
analysis   -> design
analysis   -> readers
analysis   -> model
analysis   -> exceptions
analysis   -> report/Report.h
analysis   -> Vorlen
analysis   -> host
report     -> base
cli        -> base
cli        -> readers
cli        -> analysis
cli        -> report
RULES

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# rules: "from to line" of each rule above.
rules() {
    awk '$0 == "RULES" { exit }
         table { line = FNR; sub(/#.*/, ""); if ($2 == "->" && NF == 3) print $1, $3, line }
         /^: <</ { table = 1 }' "$here/layers.sh"
}
[ "$1" != --rules ] || { rules | cut -d ' ' -f 1,2; exit; }
cd "$1"

# includes FILE...: "include FILE LINE DIRECTIVE" for every include directive.
includes() {
    awk '/^[ \t]*#[ \t]*include/ {
        sub(/^[ \t]*#[ \t]*include[ \t]*/, "")
        print "include", FILENAME, FNR, $0
    }' "$@" /dev/null
}

{
    rules | sed 's/^/rule /'
    "$here/../../cmake/sources.sh" . | sed 's/^/file /'
    "$here/../../cmake/sources.sh" . |
        tr '\n' '\0' | xargs -0 bash -c "$(declare -f includes)"'; includes "$@"' includes
} | awk '
    function fail(text) { print $2 ":" $3 ": " text; ++failures }
    function folder_of(path) { sub(/\/[^\/]*$/, "", path); return path }
    function room_of(path) { sub(/\/.*/, "", path); return path }
    function within(path, place) { return path == place || index(path, place "/") == 1 }

    # A file as an include names it.
    function written(path) { sub(/^host\//, "", path); return path }

    # Whether a rule allows the arrow. All rules that do count as used.
    function allowed(from, target,    i, found) {
        for (i = 1; i <= rule_count; ++i)
            if (rule_from[i] == from && within(target, rule_to[i]))
                used[i] = found = 1
        return found
    }
    function expected(from,    i, text) {
        for (i = 1; i <= rule_count; ++i)
            if (rule_from[i] == from)
                text = text (text ? ", " : "") rule_to[i]
        return from "/ may include " (text ? text " and itself" : "only itself")
    }
    function check_quoted(header,    room, target) {
        room = room_of($2)
        if (header ~ /^\.\.?\// || header ~ /\/\.\.?\//) {
            fail("\"" header "\" is relative, expected a path from the root")
            return
        }
        if (room == "tests" || room == "bench" || room == "examples")
            return
        if (header ~ /^host\//) {
            fail("\"" header "\" is a header of the host, expected \"" substr(header, 6) "\"")
            return
        }
        target = header in file ? header : "host/" header
        if (!(target in file)) {
            if (folder_of($2) "/" header in file)
                fail("\"" header "\" is relative to its folder, expected \"" written(folder_of($2) "/" header) "\"")
            else
                fail("\"" header "\" does not exist, expected a header from the root or from host/")
            return
        }
        if (room_of(target) != room && !allowed(room, target))
            fail(room "/ includes \"" header "\", expected none: " expected(room))
    }

    $1 == "rule" { rule_from[++rule_count] = $2; rule_to[rule_count] = $3; rule_line[rule_count] = $4; next }
    $1 == "file" { file[$2] = 1; next }
    {
        ++checked
        close_mark = $4 ~ /^</ ? ">" : "\""
        header = substr($4, 2)
        header = substr(header, 1, index(header, close_mark) - 1)
    }
    $4 ~ /^"/ { check_quoted(header); next }
    $4 ~ /^</ {
        if (header in file || "host/" header in file)
            fail("<" header "> is a header of the project, expected quotes")
        next
    }
    { fail("include of " $4 ", expected a name in quotes or angle brackets") }

    END {
        for (i = 1; i <= rule_count; ++i)
            if (!used[i]) {
                print "tests/build/layers.sh:" rule_line[i] ": no include needs the rule " rule_from[i] " -> " rule_to[i] \
                    ", expected it to be deleted"
                ++failures
            }
        printf "%d includes checked against %d rules, %d failures\n", checked, rule_count, failures
        exit checked == 0 || failures > 0
    }'
