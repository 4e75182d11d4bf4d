#!/usr/bin/env bash
# Checks the library's interface: its soname, the libraries that it needs, and a dynamic symbol table of
# exactly three classes, as in symbols.txt. VORLEN_UPDATE=1 writes symbols.txt anew.
# Usage: exports.sh LIBRARY
set -euo pipefail
library=$1
failures=0
fail() { printf 'FAIL: %s\n' "$1"; failures=$((failures + 1)); }

dynamic=$(readelf --dynamic --wide "$library")
soname=$(awk -F'[][]' '/\(SONAME\)/ { print $2 }' <<<"$dynamic")
[ "$soname" = libVorlen-4.0.so ] || fail "the soname is '$soname', expected libVorlen-4.0.so"
# The program chooses the host, so the library must not link one.
if grep -q '(NEEDED).*VorlenHost' <<<"$dynamic"; then fail "the library needs the host model"; fi

# Prints the defined dynamic symbols as "type name", with demangled names.
symbols=$(nm --dynamic --defined-only --demangle "$library" | sed -E 's/^[0-9a-f]* *[[:alpha:]] //')
others=$(grep -vE '^((vtable|typeinfo|typeinfo name) for )?Vorlen::(Tool|Sweep|Timing)(::.*)?$' <<<"$symbols" || true)
while read -r symbol; do
    [ -z "$symbol" ] || fail "exported besides the three classes: $symbol"
done <<<"$others"

# The complete list, without inline operations (W): the compiler decides whether the library has them.
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
