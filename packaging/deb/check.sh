#!/usr/bin/env bash
# Installs the .deb on this machine (as root), checks what it put in place, and
# that membership of the group qz32 is what lets a normal user open a terminal
# node of that group and mode 0660, as the udev rule makes the HID node. The
# node here is qzsim's serial line (a pseudo-terminal): no udev runs here, so
# the group and mode are given by hand. The package, the test user, the group
# (when the check created it) and the simulator are removed again at the end.
# Usage: check.sh PACKAGE.deb
set -euo pipefail
deb=$(realpath "$1")
user=qz32-check
here=$(cd "$(dirname "$0")" && pwd)
[ "$(id -u)" -eq 0 ] || { echo "check.sh installs a package: run it as root" >&2; exit 1; }
if dpkg-query -W -f='${Status}' qz32 2>/dev/null | grep -q installed; then
  echo "qz32 is installed on this machine already; the check leaves it alone" >&2
  exit 1
fi
group_existed=no
getent group qz32 >/dev/null && group_existed=yes
work=$(mktemp -d "${TMPDIR:-/tmp}/qz32-deb-XXXXXX")
chmod 755 "$work"
sim_pid=""
cleanup() {
  [ -z "$sim_pid" ] || { kill -TERM "$sim_pid"; wait "$sim_pid" || true; }
  userdel "$user" 2>/dev/null || true
  dpkg --purge qz32 >/dev/null 2>&1 || true
  [ "$group_existed" = yes ] || groupdel qz32 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
as_user() { runuser -u "$user" -- env QZ_32_PORTS_DIR="$work/ports" QZ_32_HIDRAW_DIR="$work/no-hid" "$@"; }

dpkg -i "$deb" >/dev/null
libdir=/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null || gcc -print-multiarch)
for file in "$libdir/libqz_32.so.0" "$libdir/libGetInfo.so" "$libdir/libFontMaker.so" /usr/include/qz_32.h \
            /usr/bin/qzctl /usr/bin/qzsim /usr/share/qz_32/scenarios/default.json /usr/lib/udev/rules.d/70-qz_32.rules \
            /usr/share/doc/qz32/README.Debian /etc/qz_32/ports; do
  [ -e "$file" ] || fail "$file is missing after dpkg -i"
done
getent group qz32 >/dev/null || fail "the group qz32 was not created"
grep -q 'GROUP="qz32", MODE="0660"' /usr/lib/udev/rules.d/70-qz_32.rules || fail "the udev rule does not give the node to qz32"
echo "installed: $(dpkg-query -W qz32), group $(getent group qz32), pkg-config qz_32 $(pkg-config --modversion qz_32)"

mkdir -p "$work/ports" "$work/no-hid"
/usr/bin/qzsim --serial "$work/ports" >"$work/qzsim.out" 2>"$work/qzsim.err" &
sim_pid=$!
for _ in $(seq 500); do [ -s "$work/qzsim.out" ] && break; sleep 0.01; done
[ -s "$work/qzsim.out" ] || fail "the installed qzsim did not start: $(cat "$work/qzsim.err")"
node=$(readlink "$work/ports/COM1")
chgrp qz32 "$node"
chmod 0660 "$node"
echo "terminal node: $(stat -c '%n %U:%G %a' "$node")"

useradd --system --no-create-home --shell /usr/sbin/nologin "$user"
if as_user qzctl info >"$work/outsider.txt" 2>&1; then fail "a user outside qz32 opened the terminal"; fi
echo "outside the group: $(tr '\n' ' ' <"$work/outsider.txt")"
usermod -aG qz32 "$user"
as_user qzctl info | grep -q "QZ-SIM" || fail "a member of qz32 could not open the terminal"
echo "in the group: qzctl info read the version"
# The Python binding finds the installed library by the system's search.
cp -r "$here/../../python/qz32" "$work/"
version=$(as_user env PYTHONPATH="$work" /usr/bin/python3 -c "import qz32; print(qz32.open(0).version())")
[ "$version" = "QZ-SIM V1.00" ] || fail "the Python binding did not read the version: $version"
echo "in the group: python3 -c 'import qz32; print(qz32.open(0).version())' printed $version"
