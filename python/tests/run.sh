#!/usr/bin/env bash
# Installs the binding into a fresh virtual environment with pip, as a user
# would (offline: its build backend needs nothing from a package index), checks
# its types with mypy --strict for Linux and for Windows, and runs its tests
# there against the given library and simulator.
# Usage: run.sh LIBRARY QZSIM [PYTEST ARGUMENTS...]
set -euo pipefail
library=$1
qzsim=$2
shift 2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/qz32-python-XXXXXX")
trap 'rm -rf "$work"' EXIT
/usr/bin/python3 -m venv "$work/venv"
"$work/venv/bin/pip" install --quiet "$here/.." >"$work/pip.log" 2>&1 || { cat "$work/pip.log" >&2; exit 1; }
cd "$work"
# The tools come from Debian's packages, the binding from the environment.
tools() { PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=/usr/lib/python3/dist-packages "$work/venv/bin/python" -m "$@"; }
package=$("$work/venv/bin/python" -c 'import qz32, os; print(os.path.dirname(qz32.__file__))')
for platform in linux win32; do tools mypy --strict --no-incremental --platform "$platform" "$package"; done
QZ_32_LIBRARY=$library QZ_32_QZSIM=$qzsim tools pytest -q -p no:cacheprovider "$here" "$@"
