#!/usr/bin/env bash
# Makes the packages twice, the second time with everything linked and packed again, compares them byte by byte, and tries
# the first ones meanwhile. The first time uses what ./run.sh and ./test.sh --windows have built. With --compile the second
# time also generates and compiles all of it again, without the compiler cache.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
first=$PWD/dist
second=$PWD/build/dist-again
place=$PWD/build/packages-test
report() { echo "Packages: $1 ($SECONDS s since the start)"; }

rm -rf "$first" "$second" "$place"
mkdir -p "$place/bin"
./package.sh --dist "$first"
report "made"

# try SYSTEM COMMAND...: in the background. These mostly wait, for package servers and windows.
declare -A tries=()
try() {
  local system=$1
  shift
  {
    code=0
    "$@" || code=$?
    report "those for $system are tried"
    exit "$code"
  } >"$place/$system.log" 2>&1 &
  tries[$system]=$!
}
# The simulated sensor that they connect to is not linked again while it runs.
cp build/release/bin/varkel-sim "$place/bin"
cp -r build/release/Config "$place"
try Debian tests/packages/debian_test.sh "$first"/varkel_*.deb
try Windows tests/packages/windows_test.sh "$first" "$place/bin/varkel-sim"

for build in release windows; do
  if [ "${1:-}" = --compile ]; then
    export CCACHE_RECACHE=1
    ninja -C "build/$build" -t clean shipped
  else
    find "build/$build" \( -name '*.a' -o -path '*/bin/varkel*' -type f \) -delete
  fi
done
./package.sh --dist "$second"
failed=0
for file in "$first"/*; do
  cmp "$file" "$second/${file##*/}" || failed=1
done
[ "$failed" != 0 ] || report "a second build makes the same bytes"
for system in "${!tries[@]}"; do
  wait "${tries[$system]}" || failed=1
  cat "$place/$system.log"
done
exit "$failed"
