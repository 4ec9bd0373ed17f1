#!/usr/bin/env bash
# build_times.sh: build times of the tool, the simulator and all tests, in seconds: from scratch, after a change of one
# core source, and after a change of the header that most files include. Without ccache.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export CCACHE_DISABLE=1
tree=build/timed
trap 'rm -rf "$tree"' EXIT
rm -rf "$tree"
cmake --preset dev -B "$tree" --log-level=WARNING >&2

timed_build() {
  local start=$EPOCHREALTIME
  cmake --build "$tree" --parallel "$(nproc)" >&2
  awk -v name="$1" -v start="$start" -v end="$EPOCHREALTIME" 'BEGIN { printf "%s\t%.1f\n", name, end - start }'
}

timed_build build:nothing
touch VarkelCore/src/pages/page_reader.cpp
timed_build build:source
touch VarkelCore/src/varkel_manager.h
timed_build build:header
