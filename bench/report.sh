#!/usr/bin/env bash
# report.sh [PROGRAM...]: runs all benchmarks, or only the named ones, and prints one table of figures and their
# references. docs/performance.md explains how to read it and how to add to it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Google Benchmark programs, and programs and scripts that print lines "name<tab>number" themselves.
benchmarks=(table_bench ktc_bench exchange_bench udp_bench sensor_bench page_bench state_bench)
measures=(table_memory dissector_measures window_measures cli_measures)
scripts=(build_times)

wanted=("$@")
[ $# -gt 0 ] || wanted=("${benchmarks[@]}" "${measures[@]}" "${scripts[@]}")
is_wanted() { [[ " ${wanted[*]} " == *" $1 "* ]]; }
for name in "${wanted[@]}"; do
  if [[ " ${benchmarks[*]} ${measures[*]} ${scripts[*]} " != *" $name "* ]]; then
    echo "report.sh: no program $name; choose from: ${benchmarks[*]} ${measures[*]} ${scripts[*]}" >&2
    exit 2
  fi
done
programs=()
for name in "${benchmarks[@]}" "${measures[@]}"; do
  ! is_wanted "$name" || programs+=("$name")
done
[ ${#programs[@]} -eq 0 ] || tools/build.sh bench "${programs[@]}" >&2

figures=$(mktemp)
trap 'rm -f "$figures"' EXIT

# Benchmarks that compute little but measure latency run with priority over the machine's other work, where allowed.
priority_command() {
  case $1 in
    exchange_bench|sensor_bench) chrt -f 1 true 2>/dev/null && echo "chrt -f 1" ;;
  esac
  return 0
}

# Figures and references alternate, and the fastest repetition counts, since other work on the machine disturbed it
# least. Counters give their median, and as "name:counter:max" their maximum.
for name in "${benchmarks[@]}"; do
  is_wanted "$name" || continue
  echo "Measuring: $name" >&2
  # shellcheck disable=SC2046
  $(priority_command "$name") "build/bench/bin/$name" --benchmark_format=json --benchmark_repetitions=9 \
    --benchmark_min_time=0.1 --benchmark_enable_random_interleaving=true 2>/dev/null | jq -r '
    ["name", "run_name", "run_type", "family_index", "per_family_instance_index", "repetitions",
     "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit", "bytes_per_second",
     "error_occurred", "error_message"] as $own
    | [.benchmarks[] | select(.run_type == "iteration" and (.error_occurred | not))]
    | group_by(.run_name)[]
    | (.[0].run_name | gsub("/(manual_time|real_time|iterations:[0-9]+|repeats:[0-9]+)"; "")) as $name
    | (if .[0].run_name | test("/(manual|real)_time") then "real_time" else "cpu_time" end) as $clock
    | [$name, (map(.[$clock]) | min)],
      ((.[0] | keys - $own)[] as $counter
       | map(.[$counter]) | sort
       | [$name + ":" + $counter, .[length / 2 | floor]], [$name + ":" + $counter + ":max", .[-1]])
    | @tsv' >> "$figures"
done
for name in "${measures[@]}"; do
  is_wanted "$name" || continue
  echo "Measuring: $name" >&2
  "build/bench/bin/$name" >> "$figures"
done
for name in "${scripts[@]}"; do
  is_wanted "$name" || continue
  echo "Measuring: $name" >&2
  "bench/$name.sh" >> "$figures"
done

awk -v all=$(($# == 0)) -f bench/report.awk "$figures" bench/rows.tsv
