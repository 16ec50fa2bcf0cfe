#!/usr/bin/env bash
# Installs the Debian packages the build, the tests, the simulator and the demo need.
set -euo pipefail

packages=(
  build-essential cmake ccache pkg-config clang libclang-rt-14-dev
  libgtest-dev libgmock-dev libbenchmark-dev libssl-dev
  nlohmann-json3-dev libcli11-dev libfuse3-dev fuse3 libstb-dev
  libfreetype-dev fonts-wqy-zenhei xfonts-unifont
  python3-venv python3-pytest mypy
  g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix googletest wine64
  libcpp-httplib-dev chromium chromium-driver python3-selenium
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if ((${#missing[@]})); then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -q
  $sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
