#!/usr/bin/env bash
# press_connect.sh SENSOR_LOG PICTURE BEGAN [X Y]: waits on $DISPLAY for the tool's window, whose start BEGAN then
# (nanoseconds), presses Enter in its first field, waits until the simulated sensor was asked for values and takes a
# picture of the screen. The field is at X, Y in the window.
set -euo pipefail
sensor_log=$1
picture=$2
began=$3
field=("${4:-200}" "${5:-66}")
lines() { grep -c . "$sensor_log" || true; }
before=$(lines)

# await CONDITION [TENTHS_OF_A_SECOND]
await() {
  local _
  for _ in $(seq "${2:-300}"); do
    "$1" && return 0
    sleep 0.1
  done
  return 1
}
window() { xdotool search --onlyvisible --name '^Varkel$' >/dev/null 2>&1; }
# The window is filled when its blue button has been painted: more than a few colours are on the screen.
filled() { [ "$(import -window root -resize 25% png:- 2>/dev/null | identify -format %k - 2>/dev/null || echo 0)" -gt 60 ]; }
asked() { [ "$(($(lines) - before))" -gt 3 ]; }

await window || { echo "No window appeared." >&2; exit 1; }
await filled || { echo "The window stays empty." >&2; exit 1; }
echo "The window appeared after $((($(date +%s%N) - began) / 1000000)) ms"
# No window manager gives it the focus: a click into the address field does, where Enter connects. Once more while it is
# connected does no harm.
window_id=$(xdotool search --onlyvisible --name '^Varkel$' | tail -n 1)
for attempt in 1 2 3 4 5; do
  xdotool mousemove --window "$window_id" "${field[@]}" click 1
  xdotool key Return
  await asked "$((attempt * 20))" && break
done
asked || {
  import -window root "$picture"
  echo "The sensor was not asked for anything; $picture shows the screen." >&2
  exit 1
}
sleep 2  # the page fills
import -window root "$picture"
echo "Connected: the sensor had $(($(lines) - before)) requests"
