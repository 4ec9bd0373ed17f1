#!/usr/bin/env bash
# Makes the packages twice, the second time with everything linked and packed again, compares them byte by byte, and tries
# them. The first time uses what ./run.sh and ./test.sh --windows have built. With --compile the second time also generates
# and compiles all of it again, without the compiler cache.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
first=$PWD/dist
second=$PWD/build/dist-again
debian_log=$PWD/build/debian-package-test.log
report() { echo "Packages: $1 ($SECONDS s since the start)"; }

rm -rf "$first" "$second"
./package.sh --dist "$first"
report "made"
# This one mostly waits for package servers.
{
  code=0
  tests/packages/debian_test.sh "$first"/varkel_*.deb || code=$?
  report "the one for Debian is tried"
  exit "$code"
} >"$debian_log" 2>&1 &
debian=$!

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
tests/packages/windows_test.sh "$first" || failed=1
report "those for Windows are tried"
wait "$debian" || failed=1
cat "$debian_log"
exit "$failed"
