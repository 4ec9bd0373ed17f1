#!/usr/bin/env bash
# Fails if a source file does not match .clang-format. check-format.sh --fix formats all files.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(--dry-run --Werror)
[ "${1:-}" = --fix ] && mode=(-i)
echo "Format: clang-format of all C++ files"
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' | xargs -0 -r clang-format-14 "${mode[@]}"
