#!/usr/bin/env bash
# Installs what is needed, builds, and runs the tests: the normal build and one
# under AddressSanitizer and UndefinedBehaviorSanitizer (skip it with --quick).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
presets=(default sanitize)
[ "${1:-}" = "--quick" ] && presets=(default)
for preset in "${presets[@]}"; do
  echo "== $preset build"
  bash scripts/build.sh "$preset"
  ctest --preset "$preset" -j"$(nproc)"
done
