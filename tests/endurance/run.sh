#!/usr/bin/env bash
# run.sh CYCLES ROUNDS CLOSINGS [PRESET]: the long form of the endurance and responsiveness tests, with their
# figures. CYCLES connections that the sensor cuts (and a fifth as many with the small sensors), ROUNDS refresh
# rounds, CLOSINGS closings at a random moment; VARKEL_SEED repeats those of an earlier run. 1000 cycles take
# 10 minutes, 10000 rounds half an hour, 500 closings 15 minutes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
[ $# -ge 3 ] || { sed -n '2,5s/^# //p' "$0" >&2; exit 2; }
preset=${4:-dev}
tools/build.sh "$preset" endurance_test responsiveness_test
export VARKEL_CYCLES=$1 VARKEL_SMALL_CYCLES=$((($1 + 4) / 5)) VARKEL_ROUNDS=$2 VARKEL_CLOSINGS=$3
export VARKEL_WATCH_MS=9000 QTEST_FUNCTION_TIMEOUT=$((24 * 3600 * 1000))
ctest --test-dir "build/$preset" -R '^(endurance|responsiveness)_test$' --timeout 86400 -V |
  grep -v 'VarkelManager::'
