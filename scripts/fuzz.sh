#!/bin/bash
# Runs every libFuzzer target of the given build directory for a short while.
set -euo pipefail
BUILD=${1:-build-fuzz}
SECONDS_EACH=${FUZZ_SECONDS:-30}
for f in "$BUILD"/fuzz_*; do
    [ -x "$f" ] || continue
    corpus="$BUILD/corpus/$(basename "$f")"
    mkdir -p "$corpus"
    echo "== $(basename "$f") for ${SECONDS_EACH}s"
    "$f" -max_total_time="$SECONDS_EACH" -print_final_stats=1 "$corpus"
done
