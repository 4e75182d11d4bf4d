#!/usr/bin/env bash
# Compares sizes, fields and virtual operations of the public classes, and of the host's, with those stored in
# layout.abi.gz. They are read from the headers: the library's own debug information has only the names of the
# host's classes. VORLEN_UPDATE=1 stores them anew. Status 77: libabigail's tools are missing, nothing was
# compared.
# Usage: layout.sh SOURCE_ROOT COMPILER [-I...]
set -euo pipefail
root=$1 compiler=$2
shift 2
for tool in abidw abidiff; do
    command -v "$tool" >/dev/null || { echo "skipped: $tool is not installed (apt-get install abigail-tools)"; exit 77; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$compiler" -std=c++20 -fPIC -shared -g -femit-class-debug-always -fvisibility=hidden -ffile-prefix-map="$root/=" \
    -I"$root" -I"$root/host" "$@" "$root/tests/abi/layout.cpp" -o "$work/layout.so"
# Only the parts that do not depend on the place of the tree or on the patch level of the tools.
abidw --exported-interfaces-only --suppressions "$root/tests/abi/layout.abignore" --no-corpus-path --no-comp-dir-path \
    --no-architecture --no-show-locs --no-elf-needed --no-write-default-sizes --no-parameter-names \
    "$work/layout.so" >"$work/layout.abi"

stored=$root/tests/abi/layout.abi.gz
if [ "${VORLEN_UPDATE:-}" = 1 ]; then
    gzip -9n <"$work/layout.abi" >"$stored"
    echo "stored: $stored"
    exit 0
fi
gunzip <"$stored" >"$work/stored.abi"
# Neither side may be empty: two empty sides would be equal.
for class in Vorlen::Tool Vorlen::Sweep Vorlen::Timing Pelko::Pole Pelko::Edge Ruvex::Record; do
    for side in stored layout; do
        grep -q "<class-decl name='${class#*::}' size-in-bits=" "$work/$side.abi" \
            || { echo "FAIL: $class is not described in $side.abi"; exit 1; }
    done
done
abidiff --leaf-changes-only --no-show-locs --harmless --suppressions "$root/tests/abi/layout.abignore" "$work/stored.abi" \
    "$work/layout.abi" \
    && echo 'ok: the layout is the stored one' \
    || { echo "FAIL: the layout has changed; if it is meant to, see CONTRIBUTING.md"; exit 1; }
