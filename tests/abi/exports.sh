#!/usr/bin/env bash
# The library's face: its soname, what it needs, and a dynamic symbol table of exactly three classes.
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

while read -r symbol; do
    grep -qxF -- "$symbol" <<<"$symbols" || fail "not exported: $symbol"
done <<'EXPECTED'
vtable for Vorlen::Tool
vtable for Vorlen::Sweep
vtable for Vorlen::Timing
typeinfo for Vorlen::Tool
typeinfo for Vorlen::Sweep
typeinfo for Vorlen::Timing
typeinfo name for Vorlen::Tool
typeinfo name for Vorlen::Sweep
typeinfo name for Vorlen::Timing
Vorlen::Tool::create()
Vorlen::Tool::launch()
Vorlen::Sweep::create(Pelko::Subdomain*)
EXPECTED

printf '%s: %d exported symbols, %d failures\n' "$soname" "$(wc -l <<<"$symbols")" "$failures"
[ "$failures" -eq 0 ]
