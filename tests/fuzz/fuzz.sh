#!/usr/bin/env bash
# Runs a fuzzer on a corpus for FUZZ_SECONDS (60). New inputs go beside the program, and so does one that fails.
# Usage: fuzz.sh PROGRAM CORPUS [WORDS...]: lists of words that inputs are made of
set -euo pipefail
program=$1 corpus=$2
shift 2
found=$program.found
mkdir -p "$found"
words=()
if [ $# -gt 0 ]; then
    cat "$@" > "$program.words"
    words=(-dict="$program.words")
fi
exec "$program" -max_total_time="${FUZZ_SECONDS:-60}" -timeout=10 -rss_limit_mb=4096 -max_len=4096 -print_final_stats=1 \
    "${words[@]}" -artifact_prefix="$program." "$found" "$corpus"
