#!/usr/bin/env bash
# Builds and runs the small program in this folder against an installed tree.
# Usage: consume.sh cmake|pkg-config PREFIX TOOL COMPILER
set -euo pipefail
how=$1 prefix=$2 tool=$3 compiler=$4
source=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

case $how in
    cmake)
        "$tool" -S "$source/project" -B "$work" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix"
        "$tool" --build "$work"
        ;;
    pkg-config)
        config=$(find "$prefix" -type d -name pkgconfig)
        export PKG_CONFIG_PATH=$config${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}
        # shellcheck disable=SC2046,SC2086 # both are lists of flags
        "$compiler" -std=c++20 ${CXXFLAGS:-} "$source/project/main.cpp" -o "$work/consumer" \
            $("$tool" --cflags --libs vorlen vorlen-host)
        LD_LIBRARY_PATH=$("$tool" --variable=libdir vorlen)${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
        export LD_LIBRARY_PATH
        ;;
esac

printed=$("$work/consumer")
printf 'printed: %s\n' "$printed"
[ "$printed" = VORLEN-4.0 ]
