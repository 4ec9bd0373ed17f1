#!/usr/bin/env bash
# Checks the format of the files to be committed and runs static checks on them. CONTRIBUTING.md says how to
# install it as Git's hook.
set -euo pipefail
cd "$(git rev-parse --show-toplevel)"
mapfile -d '' -t changed < <(git diff --cached --name-only -z --diff-filter=d -- '*.h' '*.cpp')
[ ${#changed[@]} -gt 0 ] || exit 0
if ! clang-format-14 --dry-run --Werror "${changed[@]}"; then
  echo "tools/check-format.sh --fix formats them." >&2
  exit 1
fi
tools/check-tidy.sh --base HEAD
