#!/bin/bash
# Measured run (not a test): brdcan dump on st1 and nxp0 at once against brdsim pacing
# its lines at 1 Mbit/s, with the bus generator putting 8-byte frames with a running
# counter on the bus as fast as the lines take them. Reports frames, rate, gaps,
# duplicates and the CPU time of each dump.
#   scripts/can_speed.sh [BUILD] [SECONDS] [LINE_RATE] [GEN_RATE]
set -euo pipefail
BUILD=${1:-build}
SECS=${2:-60}
LINE=${3:-1000000}
GEN=${4:-max}
BIN=$(cd "$BUILD" && pwd)
WORK=$(mktemp -d /tmp/brdcan-speed-XXXXXX)
"$BIN/brdsim" --write-config "$WORK" --line-rate "$LINE" --bus-gen "$GEN" >"$WORK/sim.out" &
SIM=$!
trap 'kill -INT $SIM 2>/dev/null; wait $SIM 2>/dev/null; rm -rf "$WORK"' EXIT
for _ in $(seq 100); do [ -s "$WORK/KX07.conf" ] && break; sleep 0.05; done
export BRDCTL_PRODUCT=KX07 BRDCTL_CONFIG_DIR=$WORK

dump() {  # CHANNEL: the dump's lines in $WORK/CHANNEL.out, its CPU time in .time
    local ch=$1
    ( TIMEFORMAT='%U %S %R'
      { time timeout -s INT "$SECS" "$BIN/brdcan" dump "$ch" >"$WORK/$ch.out" 2>"$WORK/$ch.err"; } 2>"$WORK/$ch.time" ) || true
}
dump st1 & A=$!
dump nxp0 & B=$!
wait $A $B

for ch in st1 nxp0; do
    read -r user sys real <"$WORK/$ch.time"
    awk -v ch="$ch" -v user="$user" -v sys="$sys" -v real="$real" '
        function hex(s,   i, v) { v = 0; for (i = 1; i <= length(s); i++) v = v * 16 + index("0123456789ABCDEF", substr(s, i, 1)) - 1; return v }
        { c = hex($7 $6 $5 $4); n++
          if (n > 1) { if (c == prev + 1) ok++; else if (c <= prev) dup++; else gap += c - prev - 1 }
          prev = c }
        END { printf "%s: %d frames in %.1f s (%.0f/s), counters %d..%d, gaps %d, out of order or repeated %d, CPU %.2f s (%.2f %% of one core)\n",
                     ch, n, real, n / real, first, prev, gap, dup, user + sys, 100 * (user + sys) / real }
        NR == 1 { first = hex($7 $6 $5 $4) }' "$WORK/$ch.out"
    sed 's/^/    /' "$WORK/$ch.err" | grep -v Locking || true
done
