#!/bin/bash
# Runs every benchmark of bench/ from the given build directory.
set -euo pipefail
BUILD=${1:-build}
for b in "$BUILD"/bench_*; do
    [ -x "$b" ] || continue
    echo "== $(basename "$b")"
    "$b" --benchmark_min_time=0.5
done
