#!/bin/bash
# Runs every libFuzzer target of a build directory for a bounded time each and fails on
# the first finding (a crash, a failed property, a hang of more than 10 s on one input).
#   scripts/fuzz.sh [BUILD_DIR]        FUZZ_SECONDS=N sets the time per target (default 20)
# Prints each target's executions per second at the end.
set -euo pipefail
BUILD=${1:-build-fuzz}
SECONDS_EACH=${FUZZ_SECONDS:-20}
summary=""
found=0
for f in "$BUILD"/fuzz_*; do
    [ -x "$f" ] && [ -f "$f" ] || continue
    name=$(basename "$f")
    corpus="$BUILD/corpus/$name"
    artifacts="$BUILD/findings/$name/"
    mkdir -p "$corpus" "$artifacts"
    echo "== $name for ${SECONDS_EACH}s"
    log="$BUILD/findings/$name.log"
    if ! "$f" -max_total_time="$SECONDS_EACH" -timeout=10 -rss_limit_mb=2048 \
        -artifact_prefix="$artifacts" -print_final_stats=1 "$corpus" >"$log" 2>&1; then
        tail -n 40 "$log"
        echo "$name: finding saved under $artifacts" >&2
        found=1
        break
    fi
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    summary+=$(printf '%-16s %10s exec/s %12s runs\n' "$name" "$rate" "$runs")$'\n'
done
printf '%s' "$summary"
exit $found
