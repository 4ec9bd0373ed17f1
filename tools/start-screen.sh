# shellcheck shell=bash
# start_screen FOLDER SIZE: starts an X server of that many pixels and exports its DISPLAY. For scripts that source this;
# they end the process $screen. The server's number and its complaints are in files of the folder.
start_screen() {
  local number=$1/display _
  rm -f "$number"  # an earlier run's
  # The server picks a free number and writes it when it accepts connections. Without -noreset it would start anew each
  # time its last client leaves, and refuse the program that connects just then.
  Xvfb -displayfd 3 -noreset -screen 0 "$2x24" -nolisten tcp 3>"$number" >"$1/screen.log" 2>&1 </dev/null &
  screen=$!
  for _ in $(seq 600); do
    [ ! -s "$number" ] || break
    sleep 0.05
  done
  if [ ! -s "$number" ]; then
    echo "The virtual screen did not start:" >&2
    cat "$1/screen.log" >&2
    return 1
  fi
  DISPLAY=:$(cat "$number")
  export DISPLAY
  unset WAYLAND_DISPLAY
}
