#!/usr/bin/env bash
# Installs the build tree into a temporary prefix and uses only what is there:
# the installed qzsim with its installed scenarios, a C program built through
# find_package and through pkg-config, and the installed qzctl.
# Usage: install_test.sh BUILD_DIR CONSUMER_SOURCE_DIR PROJECT_VERSION
# CFLAGS, when set, go to both consumer builds (the sanitizer build needs them).
set -euo pipefail
build_dir=$1 consumer_dir=$2 version=$3
work=$(mktemp -d "${TMPDIR:-/tmp}/qz32-install-XXXXXX")
sim_pid=""
trap '[ -z "$sim_pid" ] || kill -TERM "$sim_pid"; rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

prefix=$work/prefix
cmake --install "$build_dir" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name libqz_32.so)")
for file in include/qz_32.h share/qz_32/scenarios/default.json bin/qzsim bin/qzctl \
            "${libdir#"$prefix"/}/libGetInfo.so" "${libdir#"$prefix"/}/libFontMaker.so"; do
  [ -e "$prefix/$file" ] || fail "$file is not installed"
done

# The installed simulator on a pty linked as COM1, with the scenario it finds
# for itself: the installed one, marked so that no other passes for it.
expected="QZ-SIM INSTALLED"
sed -i "s/\"version\": \"QZ-SIM[^\"]*\"/\"version\": \"$expected\"/" "$prefix/share/qz_32/scenarios/default.json"
mkdir -p "$work/ports" "$work/no-hid"
"$prefix/bin/qzsim" --serial "$work/ports" >"$work/qzsim.out" 2>"$work/qzsim.err" &
sim_pid=$!
for _ in $(seq 500); do [ -s "$work/qzsim.out" ] && break; sleep 0.01; done
[ -s "$work/qzsim.out" ] || fail "qzsim did not start: $(cat "$work/qzsim.err")"
export QZ_32_PORTS_DIR=$work/ports QZ_32_HIDRAW_DIR=$work/no-hid

# find_package: this version is found; one the tree cannot give is refused.
cmake -S "$consumer_dir" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" -DQZ_32_WANTED_VERSION="$version" >/dev/null
cmake --build "$work/cmake-build" >/dev/null
[ "$("$work/cmake-build/print_version")" = "$expected" ] || fail "the find_package build did not print $expected"
if cmake -S "$consumer_dir" -B "$work/too-new" -DCMAKE_PREFIX_PATH="$prefix" -DQZ_32_WANTED_VERSION=1.0 >/dev/null 2>&1; then
  fail "find_package(qz_32 1.0) accepted version $version"
fi

# pkg-config, from the .pc file of the installed tree.
export PKG_CONFIG_PATH=$libdir/pkgconfig
[ "$(pkg-config --modversion qz_32)" = "$version" ] || fail "pkg-config does not give version $version"
# shellcheck disable=SC2046,SC2086
cc ${CFLAGS:-} "$consumer_dir/print_version.c" -o "$work/pc-version" $(pkg-config --cflags --libs qz_32) -Wl,-rpath,"$libdir"
[ "$("$work/pc-version")" = "$expected" ] || fail "the pkg-config build did not print $expected"

# The installed qzctl finds the installed library (its run path) and qzsim beside it.
"$prefix/bin/qzctl" info | grep -q "$expected" || fail "installed qzctl did not read the version"
"$prefix/bin/qzctl" --sim-serial info | grep -q "$expected" || fail "installed qzctl --sim-serial did not start its qzsim"
