#!/usr/bin/env bash
# Prints where the time of a build went: the share of each target, and the files that took longest. It reads
# ninja's log, which has the latest wall-clock time of each output. Compilations that run in parallel slow
# each other down, and files from the compiler cache took no time.
# Usage: build_times.sh [PRESET] [FILES]      default: dev 10
set -euo pipefail
export LC_ALL=C
cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset=${1:-dev}
log=build/$preset/.ninja_log
[ -f "$log" ] || { echo "build_times: no $log, run: cmake --preset $preset && cmake --build --preset $preset" >&2; exit 2; }

# compilations: prints "ms target file" for each object whose source still exists, from its latest line in the
# log. A line is start, end, mtime, output and hash.
compilations() {
    awk -F'\t' 'NF >= 4 && $4 ~ /CMakeFiles\/[^\/]+\.dir\/.*\.o$/ { ms[$4] = $2 - $1 }
        END {
            for (output in ms) {
                file = target = output
                sub(/^(.*\/)?CMakeFiles\//, "", target)
                file = target
                sub(/\.dir\/.*/, "", target)
                sub(/^[^\/]+\.dir\//, "", file)
                sub(/\.o$/, "", file)
                while (sub(/__\//, "../", file)) {}
                folder = output
                if (!sub(/\/CMakeFiles\/.*/, "/", folder)) folder = ""
                print ms[output], target, folder file
            }
        }' "$log" | while read -r ms target file; do
            [ ! -f "$file" ] || printf '%s %s %s\n' "$ms" "$target" "$file"
        done | sort -k1,1nr -k2
}

compilations | awk -v files="${2:-10}" -v preset="$preset" '
    {
        total += $1
        target[$2] += $1
        ++count[$2]
        if (NR <= files) slowest[NR] = sprintf("%8.1f  %s (%s)", $1 / 1000, $3, $2)
    }
    END {
        printf "Compilations of the preset %s, seconds by the clock on the wall (build/%s/.ninja_log)\n\n", preset, preset
        printf "%-24s %6s %8s %6s\n", "target", "files", "seconds", "%"
        sort = "sort -k3,3nr -k1,1"
        for (name in target)
            printf "%-24s %6d %8.1f %6.1f\n", name, count[name], target[name] / 1000, 100 * target[name] / (total ? total : 1) | sort
        close(sort)
        printf "%-24s %6d %8.1f\n\nslowest\n", "all", NR, total / 1000
        for (i = 1; i <= files && i <= NR; ++i) print slowest[i]
    }'
