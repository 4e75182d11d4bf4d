#!/usr/bin/env bash
# Installs a build into a prefix, and moves the tree to another one: an installed tree can be moved.
# Usage: install.sh CMAKE BUILD_DIR PREFIX
set -euo pipefail
cmake=$1 build=$2 prefix=$3

rm -rf "$prefix" "$prefix.first"
"$cmake" --install "$build" --prefix "$prefix.first" >/dev/null
mv "$prefix.first" "$prefix"

if grep -rIlF -e "$build" -e "$prefix.first" "$prefix"; then
    echo "FAIL: the files above name the place they were built in"
    exit 1
fi
if [ -e "$prefix/include/vorlen/Vorlen/detail" ]; then
    echo "FAIL: the engine's inner headers are installed"
    exit 1
fi
find "$prefix" -name '*.h' | wc -l | xargs printf '%s headers installed\n'
