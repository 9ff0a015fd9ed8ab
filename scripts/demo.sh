#!/bin/bash
# Starts the simulated board, runs real brdctl and brdcmd commands against it, stops it.
set -euo pipefail
BUILD=${1:-build}
BIN=$(cd "$BUILD" && pwd)
WORK=$(mktemp -d /tmp/brdctl-demo-XXXXXX)
PRODUCT=KX07

"$BIN/brdsim" --product "$PRODUCT" --write-config "$WORK" >"$WORK/brdsim.out" &
SIM=$!
trap 'kill -INT $SIM 2>/dev/null; wait $SIM 2>/dev/null; rm -rf "$WORK"' EXIT
for _ in $(seq 100); do [ -s "$WORK/$PRODUCT.conf" ] && break; sleep 0.05; done
[ -s "$WORK/$PRODUCT.conf" ] || { echo "demo: brdsim did not start" >&2; exit 1; }

export BRDCTL_PRODUCT=$PRODUCT BRDCTL_CONFIG_DIR=$WORK
run() {
    echo
    echo "\$ $*"
    "$@" || echo "(exit status $?)"
}
step() { echo; echo "### $*"; }

echo "brdsim serves a simulated $PRODUCT on $(head -1 "$WORK/brdsim.out"); configuration:"
sed 's/^/    /' "$WORK/$PRODUCT.conf"

step "brdctl: a GET, the raw answer bytes (MCU version)"
run "$BIN/brdctl" 02 01 01
step "brdctl: a SET with data (alarm timer 11:22:33), then read it back"
run "$BIN/brdctl" 03 13 01 0b 16 21
run "$BIN/brdctl" 02 13 01
step "brdctl: a bad argument (lower-case address) prints the usage text, nothing is sent"
run "$BIN/brdctl" 02 0a 01
step "brdcmd: a decoded GET (temperature)"
run "$BIN/brdcmd" ST_SYSTEM_GET_0C_01_TEMPERATURE
step "brdcmd: a SET with a scripted answer (buzzer on), then the decoded GET"
echo "1" | run "$BIN/brdcmd" ST_SYSTEM_SET_4B_01_BUZZER_CONTROL
echo
run "$BIN/brdcmd" BUZZER_STATUS
step "brdcmd: the FM radio module on the same line (tune to 107.90 MHz; a new run seeks from 87.50 MHz)"
echo "10790" | run "$BIN/brdcmd" FM_SET_FREQ
echo
run "$BIN/brdcmd" FM_SEEK_UP

step "brdcmd: a peripheral group, the smart battery (discharging), then the PoE ports one by one"
run "$BIN/brdcmd" ST_BKP_GET_01_01_BACKUP_BATTERY_STATUS
run "$BIN/brdcmd" ST_POE_GET_0C_01_PORT_POWER_CONSUMPTION

step "brdcan: the CAN channels (the system MCU's st1, st2 and the NXP controller nxp0)"
run "$BIN/brdcan" list
step "brdcan: dump nxp0 (candump lines) while frames are sent on st1 (cansend syntax)"
"$BIN/brdcan" dump -n 3 -T 3000 nxp0 >"$WORK/dump.out" 2>/dev/null &
DUMP=$!
sleep 0.3
run "$BIN/brdcan" send st1 123#DEADBEEF
run "$BIN/brdcan" send st1 1F334455#11.22.33
run "$BIN/brdcan" send st1 7FF#R2
wait $DUMP || true
echo
echo "\$ brdcan dump -n 3 nxp0"
cat "$WORK/dump.out"
step "brdcan: the NXP controller's versions and input voltage"
run "$BIN/brdcan" info nxp0

step "brdflash: a firmware image for the system MCU (vector table, model tag at 0x0800F000)"
{
    printf '\x00\x50\x00\x20\x01\x42\x00\x08'        # stack at the top of RAM, reset handler
    head -c $((0xB000 - 8)) /dev/urandom
    printf 'KX07 1.2.0\0'
    head -c $((0x5000 - 11)) /dev/urandom
} >"$WORK/mcu.bin"
IMAGE=$WORK/mcu.bin
if command -v srec_cat >/dev/null; then
    srec_cat "$WORK/mcu.bin" -binary -offset 0x08004000 -o "$WORK/mcu.hex" -intel
    IMAGE=$WORK/mcu.hex
fi
run "$BIN/brdflash" mcu --info
run "$BIN/brdflash" mcu "$IMAGE" --dry-run
step "brdflash: the update (progress on stderr, summary on stdout), then verify it"
run "$BIN/brdflash" mcu "$IMAGE"
run "$BIN/brdflash" mcu "$IMAGE" --verify-only --json
step "brdflash: an image for another model is refused before anything is sent"
sed 's/KX07 1.2.0/KX99 1.2.0/' "$WORK/mcu.bin" >"$WORK/other.bin"
run "$BIN/brdflash" mcu "$WORK/other.bin"

step "brdflash: the CAN MCU (boot loader framing F1/F2, every block read back)"
{
    printf '\x00\x90\x00\x10\x41\x21\x00\x00'        # stack in SRAM at 0x10000000, reset handler
    head -c $((0x400 - 8)) /dev/urandom
    printf 'KX07 2.0.1\0'
    head -c $((0x1C00 - 11)) /dev/urandom
} >"$WORK/can.bin"
run "$BIN/brdflash" can "$WORK/can.bin" --quiet
run "$BIN/brdflash" can --info
