#!/usr/bin/env bash
# check-tidy.sh [--all | --base COMMIT]: clang-tidy over our own sources, tests and benchmarks included, each by itself, so
# that a missing include is found as well. Builds nothing but the generated sources, in build/tidy. Checks what has changed
# since COMMIT, uncommitted changes too: by default since the branch left origin/main or, where there is no such branch or
# nothing has changed since, over the last 2 commits. --all checks everything.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
all=
base=
while [ $# -gt 0 ]; do
  case $1 in
    --all) all=yes ;;
    --base) base=${2:?--base needs a commit}; shift ;;
    *) sed -n 's/^# //p' "$0" | sed -n 1,4p >&2; exit 2 ;;
  esac
  shift
done

default_base() {
  local base
  base=$(git merge-base origin/main HEAD 2>/dev/null || true)
  if [ -z "$base" ] || git diff --quiet "$base" --; then
    base=$(git rev-list --max-count=3 --first-parent HEAD | tail -n 1)
  fi
  echo "$base"
}

ours=('app/*.cpp' 'cli/*.cpp' 'VarkelCore/*.cpp' 'libquarn/*.cpp' 'simulator/*.cpp' 'tools/*.cpp' 'tests/*.cpp' 'bench/*.cpp'
  ':!*_windows.cpp')
files=$(git ls-files -- "${ours[@]}")
if [ -z "$all" ]; then
  base=${base:-$(default_base)}
  changed=$(git diff --name-only --diff-filter=d "$base" -- && git ls-files --others --exclude-standard)
  # A header is checked with the source of its name.
  files=$(grep -Fxf <(sed 's/\.h$/.cpp/' <<<"$changed") <<<"$files" || true)
fi
if [ -z "$files" ]; then
  echo "Static checks: nothing has changed since ${base:0:10}"
  exit 0
fi
tools/build.sh tidy build_id
# What moc makes. The build's own targets for it would first compile the libraries.
find build/tidy -name AutogenInfo.json -print0 |
  xargs -0 -r -P "$(nproc)" -I{} cmake -E cmake_autogen {} Debug >/dev/null
echo "Static checks: clang-tidy over $(wc -l <<<"$files") files"
tr '\n' '\0' <<<"$files" |
  xargs -0 -r -n 1 -P "$(nproc)" clang-tidy-14 --quiet -p build/tidy --extra-arg=-Wno-unknown-warning-option 2>&1 |
  { grep -vE '^[0-9]+ warnings? generated|^Suppressed|^Use -header-filter' || true; }
