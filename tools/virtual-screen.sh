#!/usr/bin/env bash
# virtual-screen.sh COMMAND...: runs a command on a virtual screen that has a window manager, for machines without a
# display. Only with a window manager does a click move the keyboard's focus, as it does for a user.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/start-screen.sh"
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

start_screen "$scratch" 1920x1080
started+=("$screen")
# Folders of its own, so that no user's settings are used.
XDG_CONFIG_HOME=$scratch XDG_CACHE_HOME=$scratch openbox --sm-disable >"$scratch/openbox.log" 2>&1 &
started=($! "${started[@]}")
manager_answers() { xdotool get_desktop >/dev/null 2>&1; }
for _ in $(seq 600); do
  ! manager_answers || break
  sleep 0.05
done
manager_answers || { echo "The window manager did not start:" >&2; cat "$scratch/openbox.log" >&2; exit 1; }

# In the background, so that a signal to this script ends everything at once.
"$@" <&0 &
command=$!
started=("$command" "${started[@]}")
wait "$command"
