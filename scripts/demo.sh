#!/usr/bin/env bash
# The main job: install what is needed, build, start the terminal simulator and
# drive it with qzctl, once through the USB HID backend and once over a serial line.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
bash scripts/build.sh default >/dev/null
qzctl=build/default/tools/qzctl/qzctl

run() {
  echo "\$ qzctl $*"
  "$qzctl" "$@"
  echo
}

run --sim -v info
run --sim-serial -v info
run --sim eeprom write 10 --data 48656C6C6F
run --sim eeprom read 8 12
run --sim beep
run --sim --json info
run log
