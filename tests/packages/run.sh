#!/usr/bin/env bash
# Makes the packages twice, the second time with everything generated, linked and packed again, compares them byte by byte,
# and tries them. What ./run.sh and ./test.sh --windows have built serves for the first time. --compile also recompiles all
# of it the second time, where a compiler cache would do.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
first=$PWD/dist
second=$PWD/build/dist-again
report() { echo "Packages: $1 ($SECONDS s since the start)"; }

rm -rf "$first" "$second"
./package.sh --dist "$first"
report "made"
[ "${1:-}" != --compile ] || export CCACHE_RECACHE=1
for build in release windows; do
  ninja -C "build/$build" -t clean shipped >/dev/null
done
./package.sh --dist "$second"
for file in "$first"/*; do
  cmp "$file" "$second/${file##*/}"
done
report "a second build makes the same bytes"

# One waits for package servers most of the time, the other for Wine.
tests/packages/debian_test.sh "$first"/varkel_*.deb >build/debian-package-test.log 2>&1 &
debian=$!
failed=0
tests/packages/windows_test.sh "$first" || failed=1
wait "$debian" || failed=1
cat build/debian-package-test.log
report "tried"
exit "$failed"
