#!/usr/bin/env bash
# The library's face: its soname, what it needs, and a dynamic symbol table of exactly three classes, as in
# symbols.txt. VORLEN_UPDATE=1 writes that anew.
# Usage: exports.sh LIBRARY
set -euo pipefail
library=$1
failures=0
fail() { printf 'FAIL: %s\n' "$1"; failures=$((failures + 1)); }

dynamic=$(readelf --dynamic --wide "$library")
soname=$(awk -F'[][]' '/\(SONAME\)/ { print $2 }' <<<"$dynamic")
[ "$soname" = libVorlen-4.0.so ] || fail "the soname is '$soname', expected libVorlen-4.0.so"
# The host is the program's choice, so the library must not bring one.
if grep -q '(NEEDED).*VorlenHost' <<<"$dynamic"; then fail "the library needs the host model"; fi

# Defined dynamic symbols as "type name", names demangled.
symbols=$(nm --dynamic --defined-only --demangle "$library" | sed -E 's/^[0-9a-f]* *[[:alpha:]] //')
others=$(grep -vE '^((vtable|typeinfo|typeinfo name) for )?Vorlen::(Tool|Sweep|Timing)(::.*)?$' <<<"$symbols" || true)
while read -r symbol; do
    [ -z "$symbol" ] || fail "exported besides the three classes: $symbol"
done <<<"$others"

# The list in full. Inline operations (W) are left out: the library has them or not as the compiler likes.
found=$(mktemp)
trap 'rm -f "$found"' EXIT
nm --dynamic --defined-only --demangle "$library" | sed -nE 's/^[0-9a-f]* *[A-V] //p' | LC_ALL=C sort >"$found"
stored=$(dirname "$0")/symbols.txt
[ "${VORLEN_UPDATE:-}" != 1 ] || cp "$found" "$stored"
while read -r row; do
    case $row in
        '<'*) fail "not exported any more: ${row#< }" ;;
        '>'*) fail "exported, and not in symbols.txt: ${row#> }" ;;
    esac
done < <(diff "$stored" "$found" || true)

printf '%s: %d exported symbols, %d failures\n' "$soname" "$(wc -l <<<"$symbols")" "$failures"
[ "$failures" -eq 0 ]
