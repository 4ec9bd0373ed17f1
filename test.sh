#!/usr/bin/env bash
# Installs what is missing, builds and runs every test. ./test.sh [test|dev|asan|tsan|--windows]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
preset=${1:-test}
if [ "$preset" = --windows ]; then
  tools/install-packages.sh packages.txt packages-windows.txt
  tools/windows-libraries.sh
  tools/windows-qt.sh --if-at-hand || echo "The window is left out: only what is free of Qt is built and tested."
  tools/build.sh windows
  tools/windows-tests.sh "${2:-1}"
  exit
fi
case $preset in
  test|dev|asan|tsan) ;;
  *)
    echo "./test.sh [test|dev|asan|tsan]: plain (the default), as for daily work, AddressSanitizer + UBSan, ThreadSanitizer" >&2
    echo "./test.sh --windows [TIMES]: cross-built for Windows, under Wine" >&2
    exit 2
    ;;
esac
tools/install-packages.sh
tools/build.sh "$preset"
echo "Tests: preset $preset"
ctest --preset "$preset"
