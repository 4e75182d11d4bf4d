#!/usr/bin/env bash
# Prints the project's C++ files, one per line, relative to the root. The tools that format, check or lint
# sources read this list, so a new folder need not be added anywhere.
# Usage: sources.sh [--rooms] [ROOT]
# --rooms prints the folders of the library and the command instead: every folder with sources except tests,
# bench and examples.
set -euo pipefail
export LC_ALL=C
rooms=false
[ "${1:-}" != --rooms ] || { rooms=true; shift; }
cd "${1:-$(dirname "${BASH_SOURCE[0]}")/..}"

sources() {
    find . -mindepth 1 \( -path './build*' -o -name '.*' \) -prune \
        -o -type f \( -name '*.h' -o -name '*.cpp' \) -print | sed 's|^\./||' | sort
}

if $rooms; then
    sources | sed -n 's|/.*||p' | uniq | grep -vx -e tests -e bench -e examples || true
else
    sources
fi
