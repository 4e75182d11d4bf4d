#!/usr/bin/env bash
# Runs a fuzzer on a corpus for FUZZ_SECONDS (60). New inputs go beside the program, and so does one that fails.
# Usage: fuzz.sh PROGRAM CORPUS
set -euo pipefail
found=$1.found
mkdir -p "$found"
exec "$1" -max_total_time="${FUZZ_SECONDS:-60}" -timeout=10 -rss_limit_mb=4096 -max_len=4096 -print_final_stats=1 \
    -artifact_prefix="$1." "$found" "$2"
