#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures and builds one preset of CMakePresets.json.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset=$1
shift
targets=()
[ $# -gt 0 ] && targets=(--target "$@")
# Checkouts in different folders share what a compiler cache keeps.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=yes
echo "Build: preset $preset in build/$preset"
cmake --preset "$preset" --log-level=WARNING
cmake --build --preset "$preset" --parallel "$(nproc)" "${targets[@]}"
