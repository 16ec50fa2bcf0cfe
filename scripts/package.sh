#!/usr/bin/env bash
# Builds the Debian package build/package/qz32_<version>_<arch>.deb.
# With --check (through sudo when not root): installs it, proves that a user of the group qz32
# opens a terminal node of that group while another user cannot, and removes
# the package again.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
source scripts/compiler_cache.sh
cmake -S . -B build/package -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=/usr \
  -DQZ_32_BUILD_TESTS=OFF -DQZ_32_WERROR=ON >/dev/null
cmake --build build/package -j"$(nproc)"
(cd build/package && cpack >/dev/null)
deb=$(ls build/package/qz32_*.deb)
echo "$deb"
[ "${1:-}" = "--check" ] || exit 0
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
exec $sudo bash packaging/deb/check.sh "$deb"
