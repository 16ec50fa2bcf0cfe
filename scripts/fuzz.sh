#!/usr/bin/env bash
# Builds the fuzz preset and runs every fuzz target that it builds for a while
# (30 seconds each unless given), starting from its corpus in fuzz/corpus/<name>.
# A crash, a hang (10 s on one input) or a failed oracle fails the script and
# leaves the input that did it in build/fuzz/artifacts.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-30}"
bash scripts/deps.sh
source scripts/compiler_cache.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j"$(nproc)"

export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
artifacts=build/fuzz/artifacts
mkdir -p "$artifacts"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
targets=(build/fuzz/fuzz/fuzz_*)
[ -x "${targets[0]}" ] || { echo "no fuzz targets were built" >&2; exit 1; }
for target in "${targets[@]}"; do
  name="${target##*/fuzz_}"
  corpus=()
  [ -d "fuzz/corpus/$name" ] && corpus=("fuzz/corpus/$name")
  mkdir -p "$work/$name"
  echo "== fuzz_$name for ${seconds}s"
  "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -artifact_prefix="$artifacts/$name-" "$work/$name" "${corpus[@]}"
done
