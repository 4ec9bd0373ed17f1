#!/usr/bin/env bash
# Installs what is missing, builds, starts a simulated sensor and opens Varkel.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
root=$PWD

usage() {
  cat <<'END'
./run.sh [--model NAME] [--port PORT] [--no-simulator]

  --model NAME     the sensor model to simulate and select (default Quenta)
  --port PORT      the simulated sensor's port on 127.0.0.1 (default 9347)
  --no-simulator   start the tool alone, with your own connection settings

Without a display Varkel runs on a virtual screen: it connects, visits each page, prints the values read and
saves a screenshot of each page in ./screenshots.
END
}

model=Quenta
port=9347
simulator=yes
while [ $# -gt 0 ]; do
  case $1 in
    --model) model=${2:?--model needs a name}; shift ;;
    --port) port=${2:?--port needs a number}; shift ;;
    --no-simulator) simulator=no ;;
    -h|--help) usage; exit 0 ;;
    *) echo "Unknown option: $1" >&2; usage >&2; exit 2 ;;
  esac
  shift
done

tools/install-packages.sh
tools/build.sh release
bin=$root/build/release/bin

arguments=()
[ "$model" = Quenta ] || arguments+=("-moduleVM=$model")
if [ "$simulator" = yes ]; then
  # The tool gets a documents folder of its own, so that your connection settings stay as they are.
  home=$root/build/release/simulated-home
  mkdir -p "$home/Documents/VelmoraDataFiles"
  printf 'XDG_DOCUMENTS_DIR="%s"\n' "$home/Documents" >"$home/user-dirs.dirs"
  printf '[General]\ndevice_ip_address=127.0.0.1\nktc_port=%s\nrs485_com=%s\nrs232_com=%s\n' \
    "$port" "$home/rs485" "$home/uart" >"$home/Documents/VelmoraDataFiles/RecvSettings.ini"
  export XDG_CONFIG_HOME=$home

  log=$root/build/release/simulator.log
  simulated=("$bin/varkel-sim" --model "$model" --port "$port")
  # The model Zelto has two serial lines, which are simulated with pseudo-terminals.
  [ "$model" = Zelto ] && simulated+=(--rs485-link "$home/rs485" --uart-link "$home/uart")
  "${simulated[@]}" >"$log" 2>&1 &
  simulator_pid=$!
  trap 'kill "$simulator_pid" 2>/dev/null || true; wait "$simulator_pid" 2>/dev/null || true' EXIT
  for _ in $(seq 100); do
    grep -qE '^(listening on|serial lines:) ' "$log" && break
    kill -0 "$simulator_pid" 2>/dev/null || { echo "The simulated sensor did not start:" >&2; cat "$log" >&2; exit 1; }
    sleep 0.05
  done
  echo "Simulated sensor: model $model, $(cat "$log")"
fi

if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
  XDG_RUNTIME_DIR=$(mktemp -d)
  export XDG_RUNTIME_DIR
fi

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  echo "Varkel: press \"Connect\" to read the sensor's pages."
  "$bin/varkel" "${arguments[@]}"
elif [ "$simulator" = yes ]; then
  pictures=$root/screenshots
  mkdir -p "$pictures"
  rm -f "$pictures"/*.png
  echo "No display: running under a virtual screen, screenshots go to $pictures"
  tools/virtual-screen.sh "$bin/varkel-tour" "$pictures" "${arguments[@]}"
  echo "Screenshots:"
  ls -1 "$pictures"
else
  echo "There is no display to open the window on; with the simulated sensor (./run.sh) it runs without one." >&2
  exit 1
fi
