#!/usr/bin/env bash
# debian_test.sh PACKAGE: tries the package as a user of a bare Debian 12 would, in a root that debootstrap makes: checks
# it with lintian, installs it with what it depends on, starts the tool, connects to the simulated sensor, removes it.
# Needs root. A picture of the window is left in build/debian-test/window.png.
set -Eeuo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. tools/start-screen.sh
package=$(realpath "${1:?debian_test.sh PACKAGE}")
place=$PWD/build/debian-test
bare=$place/root
log=$place/log
mkdir -p "$place"

skip() {
  echo "Skipped: Debian package in a bare Debian, $1"
  exit 0
}
fail() {
  echo "Debian package: $1" >&2
  exit 1
}
if lintian --allow-root --fail-on error "$package" >"$log" 2>&1; then
  echo "Debian package: lintian reports no errors"
else
  cat "$log" >&2
  fail "lintian reports errors"
fi
[ "$(id -u)" = 0 ] || skip "only root can make one"
command -v debootstrap >/dev/null || skip "there is no debootstrap"

started=()
end() {
  local process
  for process in "${started[@]}"; do kill "$process" 2>/dev/null || true; done
  umount "$bare/proc" 2>/dev/null || true
}
trap end EXIT
trap 'tail -n 20 "$log" >&2' ERR
end

# The machine's own package server, and its settings for reaching it.
server=$(apt-get indextargets --format '$(REPO_URI)' 'Release: bookworm' 'Component: main' | grep '/debian/$' | head -n 1)
[ -n "$server" ] || skip "the machine knows no server of Debian 12's packages"
rm -rf --one-file-system "$bare"
began=$SECONDS
debootstrap --variant=minbase bookworm "$bare" "$server" >"$log" 2>&1 </dev/null || {
  tail -n 5 "$log"
  skip "the machine can't make a bare Debian"
}
cp /etc/apt/apt.conf.d/* "$bare/etc/apt/apt.conf.d/" 2>/dev/null || true
cp /etc/resolv.conf "$bare/etc/resolv.conf"
mount -t proc proc "$bare/proc" 2>>"$log" || skip "/proc can't be mounted there"
echo "Debian package: a bare Debian 12 is ready after $((SECONDS - began)) s"

in_root=(chroot "$bare" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive)
inside() { "${in_root[@]}" HOME=/root "$@"; }
# What is there besides logs, caches and the packages' own records.
content() { (cd "$bare" && find . -xdev -path ./var -prune -o -path ./tmp -prune -o -path ./root -prune -o -print | sort); }

cp "$package" "$bare/tmp/varkel.deb"
inside apt-get update >>"$log" 2>&1 </dev/null
began=$SECONDS
inside apt-get install -y --no-install-recommends /tmp/varkel.deb >>"$log" 2>&1 </dev/null
echo "Debian package: installed with all that it needs after $((SECONDS - began)) s"
: >"$bare/tmp/sensor.log"
"${in_root[@]}" HOME=/tmp varkel-sim --port 0 --verbose >"$bare/tmp/sensor.log" 2>&1 </dev/null &
started+=($!)
for _ in $(seq 100); do
  port=$(sed -n 's/^listening on .*:\([0-9]*\)$/\1/p' "$bare/tmp/sensor.log")
  [ -z "$port" ] || break
  sleep 0.1
done
[ -n "$port" ] || fail "the simulated sensor does not start: $(cat "$bare/tmp/sensor.log")"

# An ordinary user, with the sensor's address in the settings, on a screen of this machine.
inside useradd --create-home tester
mkdir -p "$bare/home/tester/Documents/VelmoraDataFiles"
settings=$bare/home/tester/Documents/VelmoraDataFiles/RecvSettings.ini
printf '[General]\ndevice_ip_address=127.0.0.1\nktc_port=%s\n' "$port" >"$settings"
chmod 700 "$bare/home/tester"
inside chown -R tester: /home/tester
start_screen "$place" 1920x1080
started+=("$screen")
began=$(date +%s%N)
"${in_root[@]}" HOME=/home/tester DISPLAY="$DISPLAY" XDG_RUNTIME_DIR=/home/tester \
  setpriv --reuid tester --regid tester --clear-groups varkel >"$bare/tmp/tool.log" 2>&1 </dev/null &
tool=$!
started+=("$tool")
tests/packages/press_connect.sh "$bare/tmp/sensor.log" "$place/window.png" "$began" || {
  cat "$bare/tmp/tool.log" >&2
  fail "the installed tool does not connect"
}
grep -E "missing|failed|is not installed|warning|Cannot" "$bare/tmp/tool.log" && fail "the installed tool complains"
kill "${started[@]}"
wait "$tool" || true
started=()

inside apt-get remove -y varkel >>"$log" 2>&1 </dev/null
left=$(content | grep -i varkel | grep -v '^./home' || true)
[ -z "$left" ] || fail "removing it leaves $left"
inside dpkg --purge varkel >>"$log" 2>&1 </dev/null
inside dpkg -s varkel >/dev/null 2>&1 && fail "purging it leaves its records"
[ -e "$settings" ] || fail "removing it took the user's settings"
umount "$bare/proc"
rm -rf --one-file-system "$bare"
echo "Debian package: removed and purged, the user's settings are left"
