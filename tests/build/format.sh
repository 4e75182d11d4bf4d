#!/usr/bin/env bash
# Every source is as clang-format leaves it. Versions format differently, so only the one of Debian 12 is asked.
# Usage: format.sh SOURCE_ROOT
set -euo pipefail
export LC_ALL=C

if ! command -v clang-format >/dev/null; then
    echo "skipped: no clang-format"
    exit 0
fi
version=$(clang-format --version)
case $version in
    *"version 14."*) ;;
    *) echo "skipped: clang-format 14 is needed, found: $version"; exit 0 ;;
esac

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$1"
files=$("$here/../../cmake/sources.sh" .)
# Warnings, not errors: an error ends a call at its first file.
found=$(printf '%s\n' "$files" | tr '\n' '\0' | xargs -0 -n 40 -P 2 clang-format --style=file --dry-run 2>&1 || true)
wrong=$(printf '%s\n' "$found" |
    sed -nE 's/^([^:]+):([0-9]+):[0-9]+: .*-Wclang-format-violations.*/\1:\2/p' | sort -t: -k1,1 -k2,2n -u |
    awk -F: '!seen[$1]++ { print $0 ": not as clang-format leaves it, expected the output of `make format`" }')
other=$(printf '%s\n' "$found" | grep -E '^[^ ].*(error|warning): ' | grep -v -e '-Wclang-format-violations' || true)

[ -z "$wrong" ] || printf '%s\n' "$wrong"
[ -z "$other" ] || printf '%s\n' "$other"
count() { printf '%s\n' "$@" | grep -c . || true; }
printf '%d files checked, %d failures\n' "$(count "$files")" "$(count "$wrong" "$other")"
[ -n "$files" ] && [ -z "$wrong$other" ]
