#!/usr/bin/env bash
# Builds the benchmarks in Release and runs them all.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
bash scripts/build.sh bench
for benchmark in build/bench/bench/bench_*; do
  [ -x "$benchmark" ] && "$benchmark" "$@"
done
