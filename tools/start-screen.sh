# shellcheck shell=bash
# start_screen FOLDER SIZE: starts an X server of that many pixels and exports its DISPLAY. For scripts that source this;
# they kill the process $screen. The server's number and its messages are in files in the folder.
start_screen() {
  local number=$1/display _
  rm -f "$number"  # left by an earlier run
  # The server picks a free number and writes it when it accepts connections. Without -noreset it would restart
  # whenever its last client disconnects, and refuse a program that connects at that moment.
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
