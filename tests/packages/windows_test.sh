#!/usr/bin/env bash
# windows_test.sh FOLDER SENSOR: tries the setup and the .zip of that folder under Wine, as a user would: an older version is
# installed, upgraded silently, started from the start menu, connected to a simulated sensor (the program SENSOR), asked
# from a command line by varkelctl, and uninstalled. The .zip is run by a user who may not write where it was unpacked, at
# several sizes and scales of the screen. Documents are in a folder with blanks and umlauts. Pictures are left in
# build/wine-*.png.
set -Eeuo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. tools/start-screen.sh
dist=$(realpath "${1:?windows_test.sh FOLDER SENSOR}")
sensor=${2:?windows_test.sh FOLDER SENSOR}
version=$(sed -n 's/^project(Varkel VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
setup=$dist/Varkel-$version-setup.exe
place=$PWD/build/wine-setup
wine=/usr/lib/wine/wine64
server=/usr/lib/wine/wineserver
as_user=()  # what precedes a command that another user is to run
export WINEPREFIX=$place/prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
unset WINEPATH DISPLAY WAYLAND_DISPLAY
log=$place/log

fail() {
  echo "Windows packages: $1" >&2
  exit 1
}
started=()
end() {
  "${as_user[@]}" "$server" -k >/dev/null 2>&1 || true
  local process
  for process in "${started[@]}"; do kill "$process" 2>/dev/null || true; done
}
trap end EXIT
trap 'tail -n 20 "$log" >&2' ERR
"$server" -k >/dev/null 2>&1 || true
[ ! -e "$place" ] || chmod -R u+w "$place"
rm -rf "$place"
mkdir -p "$place"
run() { "${as_user[@]}" "$wine" "$@" >>"$log" 2>&1 </dev/null; }

# prepare_user FOLDER: Wine's files, home and documents of the user are in this folder.
prepare_user() {
  export WINEPREFIX=$1/prefix HOME=$1/home
  documents="$1/Eigene Dateien für Jürgen"
  mkdir -p "$HOME" "$WINEPREFIX" "$documents/VelmoraDataFiles"
  printf '[General]\ndevice_ip_address=127.0.0.1\nktc_port=%s\n' "$port" >"$documents/VelmoraDataFiles/RecvSettings.ini"
  [ ${#as_user[@]} = 0 ] || chown -R nobody:nogroup "$1"
  "${as_user[@]}" "$server" -p >"$place/server.log" 2>&1 </dev/null
  run wineboot -i
  run reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f
  run reg add 'HKCU\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders' /v Personal /d "Z:$documents" /f
}

# use_screen SIZE
use_screen() {
  start_screen "$place" "$1"
  started+=("$screen")
}

# A sensor of this machine's own system.
: >"$place/sensor.log"
"$sensor" --port 0 --verbose >"$place/sensor.log" 2>&1 </dev/null &
started+=($!)
for _ in $(seq 100); do
  port=$(sed -n 's/^listening on .*:\([0-9]*\)$/\1/p' "$place/sensor.log")
  [ -z "$port" ] || break
  sleep 0.1
done
use_screen 1920x1080
prepare_user "$place"

# connect NAME BEGAN [X Y]: presses Enter in the window that was just started, with a picture of what comes.
connect() {
  tests/packages/press_connect.sh "$place/sensor.log" "$PWD/build/wine-$1.png" "${@:2}"
}
# The window closes by Alt+F4, as a user does it; the program is in use until its process has ended.
close_window() {
  xdotool key alt+F4
  for _ in $(seq 100); do
    pgrep -f 'Varkel.*[\\/]bin[\\/]varkel\.exe' >/dev/null || return 0
    sleep 0.1
  done
  fail "the window does not close"
}
# path_of HIVE: the search path as the registry has it; nothing where it has none.
path_of() {
  local key='HKCU\Environment'
  [ "$1" = HKCU ] || key='HKLM\System\CurrentControlSet\Control\Session Manager\Environment'
  { "$wine" reg query "$key" /v Path 2>/dev/null || true; } | tr -d '\r' | sed -n 's/^ *Path *REG_[A-Z_]* *//Ip'
}
# read_serial_number PROGRAM...: varkelctl asks the sensor.
read_serial_number() {
  "${as_user[@]}" "$wine" "$@" --host "127.0.0.1:$port" read SN 2>>"$log" </dev/null | grep -q QU64A2419C0087 ||
    fail "$* does not read from the sensor"
}
registered() { "$wine" reg query "$1\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Varkel" /v DisplayVersion 2>/dev/null | tr -d '\r'; }

# An older version, with a library that this one no longer has.
older=$place/older
mkdir -p "$older/bin" "$older/Config/varID"
echo old >"$older/bin/varkel.exe"
echo old >"$older/bin/gone.dll"
{
  echo 'Function un.RemoveFiles'
  printf '  Delete "$INSTDIR\\bin\\%s"\n' varkel.exe gone.dll
  printf '  RMDir "$INSTDIR\\%s"\n' bin 'Config\varID' Config
  echo 'FunctionEnd'
} >"$place/older.nsh"
(cd packaging/windows && makensis -V1 -DVERSION=0.9.0 -DSOURCE="$older" -DFILES="$place/older.nsh" -DICON=../../app/varkel.ico \
  -DOUTPUT="$place/older-setup.exe" setup.nsi)

# mode INSTALL_MODE HIVE PROGRAMS START_MENU: all of it once for all users, once for one.
try_mode() {
  local mode=$1 hive=$2 installed=$3 menu=$4 path
  path=$(path_of "$hive")
  run "$place/older-setup.exe" /S "/$mode"
  [ -e "$installed/bin/gone.dll" ] || fail "the older version was not installed into $installed"
  echo mine >"$installed/Config/varID/Mine.csv"
  local began=$SECONDS
  run "$setup" /S "/$mode" /Path
  echo "Windows setup ($mode): upgraded after $((SECONDS - began)) s"
  [ ! -e "$installed/bin/gone.dll" ] || fail "the upgrade leaves an old library"
  [ -e "$installed/bin/Qt5Core.dll" ] || fail "the upgrade does not bring Qt"
  grep -q mine "$installed/Config/varID/Mine.csv" || fail "the upgrade takes the user's table"
  registered "$hive" | grep -q "$version" || fail "the upgrade does not register $version"
  (cd "$installed" && find . -type f | sort | xargs -d '\n' sha256sum) >"$place/before"

  [ "$(path_of "$hive")" != "$path" ] || fail "the setup does not put varkelctl on the path"
  read_serial_number cmd /c varkelctl

  began=$(date +%s%N)
  run start /unix "$menu/Varkel.lnk"
  connect "installed-$mode" "$began"
  local code=0
  run "$setup" /S "/$mode" || code=$?
  [ "$code" = 2 ] || fail "the setup ends with $code while the tool runs"
  close_window
  (cd "$installed" && find . -type f | sort | xargs -d '\n' sha256sum) >"$place/after"
  cmp -s "$place/before" "$place/after" || fail "the tool wrote into its own folder: $(diff "$place/before" "$place/after")"
  grep -q "ktc_port=$port" "$documents/VelmoraDataFiles/RecvSettings.ini" || fail "the settings are gone"

  run "$installed/uninstall.exe" /S "/$mode"
  # It continues in a copy of itself, and the tool's log is the last thing to go.
  for _ in $(seq 100); do
    [ -e "$menu" ] || [ -n "$(registered "$hive")" ] || break
    sleep 0.2
  done
  sleep 1
  [ "$(path_of "$hive")" = "$path" ] || fail "uninstalling leaves $(path_of "$hive") as the path"
  local left
  left=$(cd "$installed" && find . -type f)
  [ "$left" = ./Config/varID/Mine.csv ] || fail "uninstalling leaves $left"
  [ ! -e "$menu" ] || fail "uninstalling leaves $menu"
  registered "$hive" | grep -q Varkel && fail "uninstalling leaves its records"
  [ -z "$(find "$WINEPREFIX/drive_c/users" -path '*QuarnTech*' -type f)" ] ||
    fail "uninstalling leaves $(find "$WINEPREFIX/drive_c/users" -path '*QuarnTech*' -type f)"
  [ -e "$documents/VelmoraDataFiles/RecvSettings.ini" ] || fail "uninstalling takes the user's settings"
  rm -r "$installed"
}
user=$WINEPREFIX/drive_c/users/$(id -un)
try_mode AllUsers HKLM "$WINEPREFIX/drive_c/Program Files/Varkel" \
  "$WINEPREFIX/drive_c/ProgramData/Microsoft/Windows/Start Menu/Programs/Varkel"
try_mode CurrentUser HKCU "$user/AppData/Local/Programs/Varkel" \
  "$user/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Varkel"
echo "Windows setup: uninstalled, the user's own files are left"

zip_folder="$place/Ausgepackt für alle"
unpacked=$zip_folder/Varkel-$version/bin
unzip -q "$dist/Varkel-$version.zip" -d "$zip_folder"
chmod -R a-w "$zip_folder"
"$server" -k >/dev/null 2>&1 || true
# root may write everywhere, so another user takes over.
if [ "$(id -u)" = 0 ]; then
  as_user=(setpriv --reuid nobody --regid nogroup --clear-groups)
  if ! "${as_user[@]}" test -x "$unpacked"; then
    echo "Skipped: a user without rights in the program's folder, other users can't get at $place"
    as_user=()
  fi
fi
[ "$(id -u)${#as_user[@]}" = 00 ] || ! "${as_user[@]}" test -w "$unpacked" || fail "the user can write to $unpacked"
prepare_user "$place/user"
read_serial_number "$unpacked/varkelctl.exe"
"${as_user[@]}" "$wine" "$unpacked/varkel-sim.exe" --model none >"$place/models" 2>&1 </dev/null || true
grep -q 'models there: .*Quenta' "$place/models" || fail "varkel-sim does not find its tables"
run "$unpacked/varkelctl.exe" --host "127.0.0.1:$port" set "Spin Rate=1200"

# await_filled WINDOW_ID: waits until the window shows more than a few colours and no longer changes.
await_filled() {
  local picture before=
  for _ in $(seq 60); do
    import -window "$1" "$place/window.ppm" 2>/dev/null || true
    picture=$(sha256sum <"$place/window.ppm")
    if [ "$picture" = "$before" ] && [ "$(identify -format %k "$place/window.ppm")" -gt 8 ]; then return; fi
    before=$picture
    sleep 0.3
  done
}
# press WINDOW X Y: clicks there, in thousandths of the window's size, when it is open and filled.
press() {
  local id WINDOW X Y WIDTH HEIGHT SCREEN
  for _ in $(seq 100); do
    id=$(xdotool search --onlyvisible --name "^$1\$" | tail -n 1) || true
    [ -z "$id" ] || break
    sleep 0.1
  done
  [ -n "$id" ] || fail "there is no window \"$1\""
  await_filled "$id"
  eval "$(xdotool getwindowgeometry --shell "$id")"
  xdotool mousemove --window "$id" $((WIDTH * $2 / 1000)) $((HEIGHT * $3 / 1000)) click 1
}
# Saves the log with Windows' file dialog, as it is proposed: in the documents folder.
save_log() {
  press Varkel 962 957
  press 'VK Log Window' 883 82
  press 'Save the log' 854 966
  for _ in $(seq 100); do
    [ -z "$(find "$documents" -name 'varkel_log_*.txt' -size +0)" ] || break
    sleep 0.1
  done
  [ -n "$(find "$documents" -name 'varkel_log_*.txt' -size +0)" ] || fail "the log is not saved where the dialog proposes"
  xdotool key Escape  # closes the log
  press Varkel 500 20
}

# try_screen NAME SIZE DPI LOGGED WIDTH X Y [ACT]: starts the tool on a screen of that size with Windows' own scaling set
# to DPI dots per inch, and does this. It logs its factor, and its window has at least that width and is on the screen.
try_screen() {
  local began id
  use_screen "$2"
  # Wine scales only if Windows' number of its scaling method is there.
  run reg add 'HKCU\Control Panel\Desktop' /v DpiScalingVer /t REG_DWORD /d 0x1000 /f
  run reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$3" /f
  "${as_user[@]}" "$server" -k || true
  began=$(date +%s%N)
  # A window program has no console: what it traces goes to a file if there is one, and Wine shows what a debugger would.
  WINEDEBUG=warn+seh "${as_user[@]}" "$wine" "$unpacked/varkel.exe" >"$place/trace" 2>"$place/debug" </dev/null &
  connect "$1" "$began" "$6" "$7"
  grep -aqF "main $4\n" "$place/debug" || fail "$1: $(grep -a -m 1 -o 'main dpi=.*' "$place/debug" || echo no scale) instead of $4"
  id=$(xdotool search --onlyvisible --name '^Varkel$' | tail -n 1)
  local WINDOW X Y WIDTH HEIGHT SCREEN
  eval "$(xdotool getwindowgeometry --shell "$id")"
  # The frame is rounded up to whole pixels.
  [ "$WIDTH" -ge "$5" ] && [ "$X" -ge 0 ] && [ "$Y" -ge 0 ] && [ $((X + WIDTH)) -le $((${2%x*} + 2)) ] &&
    [ $((Y + HEIGHT)) -le $((${2#*x} + 2)) ] || fail "$1: the window is ${WIDTH}x$HEIGHT at $X, $Y"
  "${8:-true}"
  close_window
  grep -q '^VarkelManager::Init' "$place/trace" || fail "$1: the trace lines are lost"
}
try_screen 4k 3840x2160 96 'dpi= 1 scale= 2' 2644 400 132
try_screen 150-percent 1920x1080 144 'dpi= 1.5 scale= 1.2' 1586 240 98
try_screen 200-percent 1920x1080 192 'dpi= 2 scale= 1.6' 1900 320 130 save_log
echo "Windows .zip: runs from where it was unpacked, with 3840 x 2160 pixels, at 150 % and at 200 %"

# written WHAT FOLDER PATTERN
written() { [ -n "$(find "$2" -path "$3" -type f -size +0)" ] || fail "a user without rights in the program's folder gets no $1"; }
grep -q ^point_cloud_baudrate= "$documents/VelmoraDataFiles/RecvSettings.ini" ||
  fail "a user without rights in the program's folder gets no settings"
written snapshot "$documents" '*/Snapshots/QU64A2419C0087/*'
written log "$WINEPREFIX/drive_c/users" '*/AppData/Roaming/QuarnTech/varkel/varkel*.log'
