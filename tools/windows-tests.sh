#!/usr/bin/env bash
# windows-tests.sh [TIMES]: runs the tests of the preset windows under Wine, once or several times in a row.
# All that Wine keeps lies in build/wine.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
times=${1:-1}
wine=/usr/lib/wine/wine64
server=/usr/lib/wine/wineserver
place=$PWD/build/wine
lines=$place/lines
ports=(COM3 COM4 COM5 COM6 COM12 COM13 COM14 COM15)
mkdir -p "$place/home" "$place/prefix" "$lines"
export WINEPREFIX=$place/prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe=' HOME=$place/home
unset DISPLAY WAYLAND_DISPLAY

# The output of what stays goes to files: who reads it from a pipe would wait for its end.
quietly() {
  local log=$place/$1
  shift
  "$@" >"$log" 2>&1 </dev/null || { cat "$log" >&2; exit 1; }
}
line_host=
end() {
  [ -z "$line_host" ] || kill "$line_host" 2>/dev/null || true
  "$server" -k >/dev/null 2>&1 || true
}
trap end EXIT
"$server" -k >/dev/null 2>&1 || true
echo "Wine: preparing $WINEPREFIX"
quietly server.log "$server" -p
quietly boot.log "$wine" wineboot -i

# Serial ports are links: to a name that leads to the pseudo-terminal that the host has made for a test.
build/windows/line_host "$lines" "${ports[@]}" >"$place/line_host.log" 2>&1 </dev/null &
line_host=$!
for port in "${ports[@]}"; do
  ln -sfn "$lines/$port" "$WINEPREFIX/dosdevices/${port,,}"
done
for _ in $(seq 100); do
  VARKEL_LINE_HOST=$(sed -n 's/^port //p' "$place/line_host.log")
  [ -z "$VARKEL_LINE_HOST" ] || break
  sleep 0.05
done
export VARKEL_LINE_HOST
[ -n "$VARKEL_LINE_HOST" ] || { cat "$place/line_host.log" >&2; exit 1; }

failed=0
for ((run = 1; run <= times; ++run)); do
  [ "$times" = 1 ] || echo "Run $run of $times"
  ctest --preset windows || failed=$((failed + 1))
done
# What a test says when it is skipped stands in its output only.
awk '/: Skipped$/ { getline reason } /^\[  SKIPPED \] .* ms\)$/ { print "Skipped: " $4 ", " reason }' \
  build/windows/Testing/Temporary/LastTest.log
if [ "$failed" != 0 ]; then
  echo "Wine: $failed of $times runs failed" >&2
  exit 1
fi
