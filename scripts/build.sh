#!/usr/bin/env bash
# Configures and builds one preset (default: "default"; also "sanitize", "bench",
# "fuzz", "windows-x86_64", "windows-i686").
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/compiler_cache.sh
preset="${1:-default}"
# A Windows build runs the LCD font generator of the native build.
if [[ "$preset" == windows-* ]]; then
  cmake --preset default >/dev/null
  cmake --build build/default -j"$(nproc)" --target make_lcd_fonts
fi
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset" -j"$(nproc)"
