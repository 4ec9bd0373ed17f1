#!/usr/bin/env bash
# windows-tests.sh [TIMES]: runs the tests of the preset windows under Wine, once or several times in a row.
# All of Wine's files are in build/wine.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. tools/start-screen.sh
times=${1:-1}
wine=/usr/lib/wine/wine64
server=/usr/lib/wine/wineserver
place=$PWD/build/wine
lines=$place/lines
ports=(COM3 COM4 COM5 COM6 COM12 COM13 COM14 COM15)
mkdir -p "$place/home" "$place/prefix" "$lines"
export WINEPREFIX=$place/prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe=' HOME=$place/home
unset DISPLAY WAYLAND_DISPLAY
# Programs find the DLLs of Qt and of the compiler.
compiler=$(x86_64-w64-mingw32-g++-posix -print-file-name=libstdc++-6.dll)
export WINEPATH="Z:$PWD/build/windows-qt/bin;Z:$(dirname "$compiler");Z:/usr/x86_64-w64-mingw32/lib;Z:$PWD/build/windows/tests"

# Background programs write to files, because a reader of a pipe would wait for them to end.
quietly() {
  local log=$place/$1
  shift
  "$@" >"$log" 2>&1 </dev/null || { cat "$log" >&2; exit 1; }
}
line_host=
screen=
end() {
  "$server" -k >/dev/null 2>&1 || true
  local process
  for process in $line_host $screen; do kill "$process" 2>/dev/null || true; done
}
trap end EXIT
"$server" -k >/dev/null 2>&1 || true
if [ -e build/windows/bin/varkel.exe ]; then
  start_screen "$place" 1920x1080
fi
echo "Wine: preparing $WINEPREFIX"
quietly server.log "$server" -p
quietly boot.log "$wine" wineboot -i
# Without a window manager Wine would wait two seconds for one each time a window closes.
quietly managed.log "$wine" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f
# Each test has a documents folder of its own, in its environment.
export VARKEL_DOCUMENTS=Z:$place/home/Documents
quietly documents.log "$wine" reg add \
  'HKCU\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders' \
  /v Personal /t REG_EXPAND_SZ /d '%VARKEL_DOCUMENTS%' /f

# The user's numbers have a decimal comma and digits of their own, which must not show in files and on the wire.
for number in sDecimal=, sNativeDigits=۰۱۲۳۴۵۶۷۸۹ NumShape=2; do
  quietly locale.log "$wine" reg add 'HKCU\Control Panel\International' /v "${number%%=*}" /d "${number#*=}" /f
done

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
  if ! ctest --preset windows | tee "$place/tests.log"; then
    # Wine sometimes fails to start a program at all. Only those get another chance.
    if [ "$(grep -c '\.\*\*\*' "$place/tests.log")" != "$(grep -c '\.\*\*\*Failed  *0\.00 sec' "$place/tests.log")" ] ||
      ! ctest --preset windows --rerun-failed; then
      failed=$((failed + 1))
    fi
  fi
done
# The reason for skipping a test is only in its output.
awk '/: Skipped$/ { getline reason } /^\[  SKIPPED \] .* ms\)$/ { print "Skipped: " $4 ", " reason }' \
  build/windows/Testing/Temporary/LastTest.log
if [ "$failed" != 0 ]; then
  echo "Wine: $failed of $times runs failed" >&2
  exit 1
fi
