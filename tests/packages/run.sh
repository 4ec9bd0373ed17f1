#!/usr/bin/env bash
# Makes the packages twice, the second time with everything linked and packed again elsewhere, compares them byte by
# byte, and tries them. --compile also recompiles all of it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
first=$PWD/dist
second=$PWD/build/dist-again
rm -rf "$first" "$second"
./package.sh --dist "$first"
[ "${1:-}" != --compile ] || export CCACHE_RECACHE=1
cmake --build build/package --target clean
cmake --build build/windows --target clean
./package.sh --dist "$second"
for file in "$first"/*; do
  cmp "$file" "$second/${file##*/}"
done
echo "Packages: a second build makes the same bytes"
tests/packages/debian_test.sh "$first"/varkel_*.deb
tests/packages/windows_test.sh "$first"
