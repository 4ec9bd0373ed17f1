#!/usr/bin/env bash
# Installs what is missing, builds and runs every test. ./test.sh [dev|asan|tsan]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
preset=${1:-dev}
case $preset in
  dev|asan|tsan) ;;
  *) echo "./test.sh [dev|asan|tsan]: plain (the default), AddressSanitizer + UBSan, or ThreadSanitizer" >&2; exit 2 ;;
esac
tools/install-packages.sh
tools/build.sh "$preset"
echo "Tests: preset $preset"
ctest --preset "$preset"
