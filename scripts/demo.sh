#!/usr/bin/env bash
# The main job: install what is needed, build, start the terminal simulator and
# drive it with qzctl, once through the USB HID backend and once over a serial line.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
bash scripts/build.sh default >/dev/null
qzctl=build/default/tools/qzctl/qzctl
qzsim=build/default/sim/qzsim

# One simulated terminal for the whole demo, in a folder of its own: a serial
# line (a pseudo-terminal linked as COM1) and, where FUSE works, a USB HID node.
work=$(mktemp -d "${TMPDIR:-/tmp}/qz32-demo-XXXXXX")
mkdir -p "$work/ports" "$work/hid" "$work/no-hid"
sim_pid=""

stop_sim() {
  if [ -n "$sim_pid" ]; then
    kill -TERM "$sim_pid" 2>/dev/null || true
    wait "$sim_pid" 2>/dev/null || true
    sim_pid=""
  fi
  # qzsim unmounts when it stops; a mount left by one that was killed goes here.
  if mountpoint -q "$work/hid" 2>/dev/null; then umount -l "$work/hid" || true; fi
}
trap 'stop_sim; rm -rf "$work"' EXIT
trap 'exit 130' INT TERM

# Starts qzsim with the given services and waits until it serves them: it
# prints one line per service once all are up. Fails if qzsim gives up.
start_sim() {
  local services=$1
  shift
  "$qzsim" "$@" >"$work/qzsim.out" 2>"$work/qzsim.err" &
  sim_pid=$!
  for _ in $(seq 500); do
    if ! kill -0 "$sim_pid" 2>/dev/null; then
      wait "$sim_pid" 2>/dev/null || true
      sim_pid=""
      return 1
    fi
    [ "$(wc -l <"$work/qzsim.out")" -ge "$services" ] && return 0
    sleep 0.01
  done
  stop_sim
  return 1
}

say() { printf '== %s\n' "$*"; }
run() {
  echo "\$ qzctl $*"
  "$qzctl" "$@"
  echo
}

hid=no
if [ -r /dev/fuse ] && [ -w /dev/fuse ]; then
  if start_sim 2 --serial "$work/ports" --hid "$work/hid"; then
    hid=yes
  else
    hid_problem="FUSE would not mount here ($(tr '\n' ' ' <"$work/qzsim.err"))"
  fi
else
  hid_problem="/dev/fuse is missing or not usable here"
fi
if [ "$hid" = no ]; then
  start_sim 1 --serial "$work/ports" || { echo "qzsim did not start: $(cat "$work/qzsim.err")" >&2; exit 1; }
fi
say "Simulated terminal started (qzsim, pid $sim_pid)"
cat "$work/qzsim.out"
echo

# The library finds the terminal through these two folders.
export QZ_32_PORTS_DIR="$work/ports"
if [ "$hid" = yes ]; then
  say "USB: the library finds the HID node first"
  export QZ_32_HIDRAW_DIR="$work/hid"
  run info
else
  say "USB: skipped, no HID node: $hid_problem"
  echo
fi

say "Serial: with no HID node to find, the library opens COM1"
QZ_32_HIDRAW_DIR="$work/no-hid" run info

if [ "$hid" = yes ]; then export QZ_32_HIDRAW_DIR="$work/hid"; else export QZ_32_HIDRAW_DIR="$work/no-hid"; fi
say "EEPROM: write \"Hello\" at offset 10, then read 12 bytes from offset 8 (the same simulator keeps them)"
run eeprom write 10 --data 48656C6C6F
run eeprom read 8 12
say "Buzzer, the information as JSON, and where the diagnostic log would go"
run beep
run --json info
run log
say "Cards and PINs: the bank cards' PAN and holder's name, the identity card, a PIN typed on the keypad"
run pan --contactless
run pan --contact
run idcard --photo "$work/photo.bmp"
run pin

stop_sim
say "Or in one line: qzctl starts a simulator of its own and stops it again"
if [ "$hid" = no ] && [ -r /dev/fuse ] && [ -w /dev/fuse ]; then
  run --sim-serial -v info  # --sim would offer the HID node, which cannot be mounted here
else
  run --sim -v info
fi
