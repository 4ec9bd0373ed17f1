#!/usr/bin/env bash
# run.sh CYCLES ROUNDS CLOSINGS [PRESET]: hours of use. Prints what grew, how soon closed windows were gone and how long
# the window did not respond. CYCLES connections that the sensor closes (and a fifth as many for each small sensor),
# ROUNDS refresh rounds, CLOSINGS closings at random moments; VARKEL_SEED repeats those of an earlier run. 1000 cycles
# and their fifths take half an hour, 10000 rounds the same, 500 closings a quarter of that.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
[ $# -ge 3 ] || { sed -n '2,6s/^# //p' "$0" >&2; exit 2; }
preset=${4:-bench} # asan, tsan: after cmake --preset asan -DVARKEL_BENCH=ON
tools/build.sh "$preset" soak responsiveness
export VARKEL_CYCLES=$1 VARKEL_SMALL_CYCLES=$((($1 + 4) / 5)) VARKEL_ROUNDS=$2 VARKEL_CLOSINGS=$3
export VARKEL_WATCH_MS=${VARKEL_WATCH_MS:-9000} QTEST_FUNCTION_TIMEOUT=$((24 * 3600 * 1000))
export QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software LC_ALL=C.UTF-8
export LSAN_OPTIONS=suppressions=$PWD/cmake/lsan.supp:print_suppressions=0
export TSAN_OPTIONS=ignore_noninstrumented_modules=1:halt_on_error=1
HOME=$(mktemp -d)
export HOME XDG_RUNTIME_DIR=$HOME
trap 'rm -rf "$HOME"' EXIT
cd "build/$preset" # an install root: the tables are there
for program in soak responsiveness; do
  "bin/$program" | grep -v 'VarkelManager::'
done
