#!/usr/bin/env bash
# The Windows DLLs: builds both architectures (presets windows-x86_64 and
# windows-i686), checks that both export every function of the header by its
# undecorated name and that the 32-bit one is stdcall, runs the x86_64 tests
# under Wine with qzsim behind a Wine COM port, and packs the zip
# (build/qz_32-windows.zip). The i686 tests run too where a 32-bit Wine is
# installed (Debian's wine32, of the i386 architecture).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
source scripts/compiler_cache.sh
jobs=$(nproc)

# The native build gives the LCD font generator and qzsim.
cmake --preset default >/dev/null
cmake --build build/default -j"$jobs" --target make_lcd_fonts qzsim
# Without a 32-bit Wine the i686 tests could not run: only its DLLs are built.
wine32=/usr/lib/wine/wine
for arch in x86_64 i686; do
  echo "== windows-$arch build"
  cmake --preset "windows-$arch" >/dev/null
  targets=()
  [ "$arch" = i686 ] && [ ! -x "$wine32" ] && targets=(--target qz_32 qz_32_getinfo qz_32_fontmaker)
  cmake --build --preset "windows-$arch" -j"$jobs" "${targets[@]}"
done

# The names a DLL exports, sorted.
dll_exports() {
  "$1-objdump" -p "$2" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/{/^\s*\[ *[0-9]/s/^.*\] //p}' | sort
}

# Every name of the .def is exported, and nothing else; on 32 bits each one is
# the stdcall function _name@bytes, whose arguments take 4 bytes each. The
# components export their one entry each, by its plain name.
check_exports() {
  local arch=$1 triplet=$2
  local dir=build/windows-$arch/lib
  local expected exported component
  for component in GetInfo:GetBmp FontMaker:getFontBit; do
    exported=$(dll_exports "$triplet" "$dir/${component%%:*}.dll")
    if [ "$exported" != "${component#*:}" ]; then
      echo "windows-$arch: ${component%%:*}.dll exports '$exported', not ${component#*:} alone" >&2
      return 1
    fi
  done
  echo "windows-$arch: GetInfo.dll and FontMaker.dll export their entries alone"
  expected=$(sed -n 's/^    //p' "$dir/qz_32.def" | sort)
  exported=$(dll_exports "$triplet" "$dir/qz_32.dll")
  if [ "$expected" != "$exported" ]; then
    echo "windows-$arch: the exports of qz_32.dll differ from qz_32.def:" >&2
    diff <(echo "$expected") <(echo "$exported") >&2 || true
    return 1
  fi
  echo "windows-$arch: qz_32.dll exports all $(echo "$exported" | wc -l) names undecorated"
  if [ "$arch" = i686 ]; then
    local stdcall
    stdcall=$("$triplet-nm" "$dir/qz_32.dll" | sed -n 's/^.* T _\([A-Za-z0-9_]*\)@[0-9]*$/\1/p' | sort -u)
    if [ "$expected" != "$(comm -12 <(echo "$expected") <(echo "$stdcall"))" ]; then
      echo "windows-i686: exports that are not stdcall:" >&2
      comm -23 <(echo "$expected") <(echo "$stdcall") >&2
      return 1
    fi
    echo "windows-i686: every export is stdcall"
  fi
}
check_exports x86_64 x86_64-w64-mingw32
check_exports i686 i686-w64-mingw32

# Wine in a prefix of the build's own, quiet, with qzsim's pseudo-terminal as COM12.
export WINEPREFIX=${WINEPREFIX:-$PWD/build/wine-prefix} WINEDEBUG=-all
com_port=12
work=$(mktemp -d "${TMPDIR:-/tmp}/qz32-windows-XXXXXX")
sim_pid=""
stop_sim() {
  if [ -n "$sim_pid" ]; then
    kill -TERM "$sim_pid" 2>/dev/null || true
    wait "$sim_pid" 2>/dev/null || true
  fi
  /usr/lib/wine/wineserver -k 2>/dev/null || true
}
trap 'stop_sim; rm -rf "$work"' EXIT
mkdir -p "$work/ports"
build/default/sim/qzsim --serial "$work/ports" --name "COM$com_port" --screen "$work/screen.png" \
  >"$work/qzsim.out" 2>"$work/qzsim.err" &
sim_pid=$!
for _ in $(seq 500); do
  grep -q '^serial: ' "$work/qzsim.out" && break
  kill -0 "$sim_pid" 2>/dev/null || { cat "$work/qzsim.err" >&2; exit 1; }
  sleep 0.01
done
device=$(sed -n 's/^serial: .* -> //p' "$work/qzsim.out")
[ -n "$device" ] || { echo "qzsim did not start" >&2; exit 1; }

# The Ports key maps a COM name to a device path; Wine reads it when it starts.
/usr/lib/wine/wine64 reg add 'HKLM\Software\Wine\Ports' /v "COM$com_port" /t REG_SZ /d "$device" /f >/dev/null
/usr/lib/wine/wineserver -k 2>/dev/null || true
/usr/lib/wine/wineserver -w
export QZ_32_WINDOWS_COM_PORT=$((com_port - 1)) QZ_32_WINDOWS_SCREEN_PNG="Z:$work/screen.png"

echo "== windows-x86_64 tests under Wine (COM$com_port is qzsim at $device)"
ctest --test-dir build/windows-x86_64 --output-on-failure
if [ -x "$wine32" ]; then
  echo "== windows-i686 tests under Wine"
  ctest --test-dir build/windows-i686 --output-on-failure
else
  echo "== windows-i686: no 32-bit Wine here (wine32 is not installed); built and its exports checked only"
fi

# The zip: the header and the .def once, each architecture's DLLs (the library
# and its photo and font components) with an import library (the 32-bit one
# maps the stdcall names a compiler emits to the undecorated exports).
package=build/qz_32-windows
rm -rf "$package" "$package.zip"
mkdir -p "$package/include"
cp lib/api/qz_32.h "$package/include/"
cp build/windows-x86_64/lib/qz_32.def "$package/"
for arch in x86_64:x86_64-w64-mingw32 i686:i686-w64-mingw32; do
  triplet=${arch#*:} arch=${arch%%:*}
  mkdir -p "$package/$arch"
  cp "build/windows-$arch/lib/"{qz_32,GetInfo,FontMaker}.dll "$package/$arch/"
  "$triplet-strip" --strip-unneeded "$package/$arch/"*.dll
  cp "build/windows-$arch/lib/libqz_32.dll.a" "$package/$arch/qz_32.lib"
done
(cd build && cmake -E tar cf qz_32-windows.zip --format=zip qz_32-windows)
echo "== build/qz_32-windows.zip"
