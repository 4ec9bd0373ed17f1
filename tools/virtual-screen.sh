#!/usr/bin/env bash
# virtual-screen.sh COMMAND...: runs a command on a virtual screen that has a window manager, for machines without a
# display. Only with a window manager does a click move the keyboard's focus, as it does for a user.
set -euo pipefail
scratch=$(mktemp -d)
started=()
end() {
  for process in "${started[@]}"; do
    kill "$process" 2>/dev/null || true
    wait "$process" 2>/dev/null || true
  done
  rm -rf "$scratch"
}
trap end EXIT
trap 'exit 143' TERM INT

# wait_for WHAT CONDITION...: waits until the condition is true, for at most half a minute.
wait_for() {
  local what=$1
  shift
  for _ in $(seq 600); do
    "$@" >/dev/null 2>&1 && return
    sleep 0.05
  done
  echo "virtual-screen.sh: $what did not start:" >&2
  cat "$scratch/log" >&2
  exit 1
}

# The server picks a free display and writes its number when it accepts connections.
Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp 3>"$scratch/display" >"$scratch/log" 2>&1 &
started+=($!)
wait_for Xvfb test -s "$scratch/display"
DISPLAY=:$(cat "$scratch/display")
export DISPLAY
unset WAYLAND_DISPLAY
# Folders of its own, so that no user's settings are used.
XDG_CONFIG_HOME=$scratch XDG_CACHE_HOME=$scratch openbox --sm-disable >>"$scratch/log" 2>&1 &
started=($! "${started[@]}")
wait_for "the window manager" xdotool get_desktop

# In the background, so that a signal to this script ends everything at once.
"$@" <&0 &
command=$!
started=("$command" "${started[@]}")
wait "$command"
