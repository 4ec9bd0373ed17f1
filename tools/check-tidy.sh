#!/usr/bin/env bash
# check-tidy.sh PRESET: clang-tidy over our own sources, with the compile commands of a built preset.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/${1:-dev}
echo "Static checks: clang-tidy with $build"
git ls-files -z -- 'app/*.cpp' 'VarkelCore/*.cpp' 'libquarn/*.cpp' 'simulator/*.cpp' ':!*_windows.cpp' |
  xargs -0 -r -n 1 -P "$(nproc)" clang-tidy-14 --quiet -p "$build" --extra-arg=-Wno-unknown-warning-option 2>&1 |
  { grep -vE '^[0-9]+ warnings? generated|^Suppressed|^Use -header-filter' || true; }
