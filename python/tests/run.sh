#!/usr/bin/env bash
# Installs the binding into a fresh virtual environment with pip, as a user
# would, checks its types with mypy --strict, and runs its tests there against
# the given library and simulator.
# Usage: run.sh LIBRARY QZSIM [PYTEST ARGUMENTS...]
set -euo pipefail
library=$1
qzsim=$2
shift 2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/qz32-python-XXXXXX")
trap 'rm -rf "$work"' EXIT
# Debian's Python with its pytest, setuptools and wheel serves the environment,
# so nothing is downloaded.
/usr/bin/python3 -m venv --system-site-packages "$work/venv"
# pip builds in the folder it is given: a copy keeps the source tree clean.
cp -r "$here/.." "$work/source"
"$work/venv/bin/pip" install --quiet --no-build-isolation --no-deps "$work/source" >"$work/pip.log" 2>&1 \
  || { cat "$work/pip.log" >&2; exit 1; }
cd "$work"
"$work/venv/bin/python" -m mypy --strict --no-incremental "$work/source/qz32"
PYTHONDONTWRITEBYTECODE=1 QZ_32_LIBRARY=$library QZ_32_QZSIM=$qzsim "$work/venv/bin/python" -m pytest -q -p no:cacheprovider "$here" "$@"
