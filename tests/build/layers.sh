#!/usr/bin/env bash
# Data flows one way: readers -> host -> Vorlen -> host -> report. So
#   the engine includes the host's headers and its own, each by its full name from host/ or from the root, and
#   the host, the readers and the reports include nothing of the engine, and
#   of the command only the run and the harvest do.
# What every part of the command may use (base/) includes nothing else of the project.
# Usage: layers.sh SOURCE_ROOT
set -euo pipefail
cd "$1"
failures=0
checked=0
fail() { printf 'FAIL: %s:%s: %s\n' "$1" "$2" "$3"; failures=$((failures + 1)); }

# includes FOLDER: "file line kind header" of every include directive in it; the kind is " or <.
includes() {
    [ ! -d "$1" ] || find "$1" -type f \( -name '*.h' -o -name '*.cpp' \) -exec awk '
        match($0, /^[ \t]*#[ \t]*include[ \t]*["<][^">]+/) {
            directive = substr($0, RSTART, RLENGTH)
            sub(/^[ \t]*#[ \t]*include[ \t]*/, "", directive)
            print FILENAME, FNR, substr(directive, 1, 1), substr(directive, 2)
        }' {} +
}

while read -r file line kind header; do
    checked=$((checked + 1))
    case $kind$header in
        \"Vorlen/*) [ -f "$header" ] || fail "$file" "$line" "no such header of the engine: $header" ;;
        \"*) [ -f "host/$header" ] || fail "$file" "$line" "neither the host's nor the engine's: $header" ;;
        \<*) [ ! -e "$header" ] && [ ! -e "host/$header" ] \
            || fail "$file" "$line" "the project's own headers are included with quotes: $header" ;;
    esac
done < <(includes Vorlen)

while read -r file line kind header; do
    checked=$((checked + 1))
    case $kind$header in
        \<*) ;;
        *) [ -f "base/$header" ] || fail "$file" "$line" "base/ includes nothing else of the project: $header" ;;
    esac
done < <(includes base)

for folder in host readers report; do
    while read -r file line kind header; do
        checked=$((checked + 1))
        case /$header in
            */Vorlen/*) fail "$file" "$line" "$folder/ includes nothing of the engine: $header" ;;
        esac
    done < <(includes "$folder")
done

while read -r file line kind header; do
    checked=$((checked + 1))
    case /$header in
        */Vorlen/*)
            case $file in
                cli/Session.cpp | cli/Harvest*) ;;
                *) fail "$file" "$line" "only the run and the harvest include the engine: $header" ;;
            esac ;;
    esac
done < <(includes cli)

printf '%d includes checked, %d failures\n' "$checked" "$failures"
[ "$checked" -gt 0 ] && [ "$failures" -eq 0 ]
