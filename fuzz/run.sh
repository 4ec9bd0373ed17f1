#!/usr/bin/env bash
# Fuzzes the code that takes bytes and texts from outside, with the targets of the preset asan.
#   run.sh SECONDS [TARGET...]   builds the targets, replays fuzz/corpus/TARGET and fuzzes each for SECONDS.
#                                New inputs are kept in build/fuzz/found/TARGET, failing ones in
#                                build/fuzz/artifacts; after a failure the exit status is not 0.
#   run.sh --merge [TARGET...]   adds found inputs that reach new code to fuzz/corpus; review them before
#                                you commit: about sixty inputs per target are enough.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
[[ ${1:-} =~ ^([0-9]+|--merge)$ ]] || { sed -n '2,8s/^# *//p' "$0" >&2; exit 2; }
what=$1
shift
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  mapfile -t targets < <(sed -n 's/^varkel_fuzz_target(\([a-z_]*\) .*/\1/p' fuzz/CMakeLists.txt)
fi
tools/install-packages.sh
tools/build.sh asan "${targets[@]/#/fuzz_}"

export UBSAN_OPTIONS=print_stacktrace=1
# An announced length must not be allocated: nothing here needs 64 MiB at once.
# The entropic schedule would take more time than the targets themselves.
limits=(-malloc_limit_mb=64 -rss_limit_mb=1024 -timeout=10 -max_len=4096 -entropic=0)

# fuzz TARGET: writes build/fuzz/TARGET.log and prints one line.
fuzz() {
  local target=$1 code=0
  local kept=fuzz/corpus/$target found=build/fuzz/found/$target artifacts=build/fuzz/artifacts/$target
  mkdir -p "$kept" "$found" "$artifacts"
  local options=("${limits[@]}" "-artifact_prefix=$artifacts/")
  if [ -f "fuzz/$target.dict" ]; then options+=("-dict=fuzz/$target.dict"); fi
  local run=("build/asan/bin/fuzz_$target" "${options[@]}") log=build/fuzz/$target.log
  if [ "$what" = --merge ]; then
    "${run[@]}" -set_cover_merge=1 -use_counters=0 "$kept" "$found" >"$log" 2>&1 || code=$?
  else
    "${run[@]}" -max_total_time="$what" -print_final_stats=1 "$found" "$kept" >"$log" 2>&1 || code=$?
  fi
  echo "$target: $(grep -aE '^#[0-9]+' "$log" | tail -n 1 || true) $(find "$kept" -type f | wc -l) inputs kept"
  return "$code"
}

# As many at a time as there are processors.
failed=()
declare -A running=()
wait_for_one() {
  local process code=0
  wait -n -p process || code=$?
  [ "$code" = 0 ] || failed+=("${running[$process]}")
  unset "running[$process]"
}
for target in "${targets[@]}"; do
  [ "${#running[@]}" -lt "$(nproc)" ] || wait_for_one
  fuzz "$target" &
  running[$!]=$target
done
while [ "${#running[@]}" -gt 0 ]; do wait_for_one; done
if [ ${#failed[@]} -gt 0 ]; then
  for target in "${failed[@]}"; do tail -n 40 "build/fuzz/$target.log"; done
  echo "Failed: ${failed[*]}; the logs are build/fuzz/TARGET.log, the inputs are in build/fuzz/artifacts." >&2
  exit 1
fi
