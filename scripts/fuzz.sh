#!/usr/bin/env bash
# fuzz.sh SECONDS [TARGET...]: builds the fuzz targets and runs each, or those that are named, for so many seconds over its corpus
# and what it makes of it.  What it finds is left in build/fuzz/found/, inputs of new paths in build/fuzz/corpus/, where the next
# run goes on from.
set -uo pipefail
cd "$(dirname "$0")/.."
seconds=${1:?usage: fuzz.sh SECONDS [TARGET...]}
shift
cmake --preset asan >/dev/null && cmake --build --preset asan --target biseam_fuzz || exit 1
mkdir -p build/fuzz/found build/fuzz/logs
[ $# -eq 0 ] && set -- $(cd build/asan/fuzz && printf '%s\n' biseam_fuzz_* | sed 's/^biseam_fuzz_//')
status=0
for target; do
  mkdir -p "build/fuzz/corpus/$target"
  log=build/fuzz/logs/$target.log
  if build/asan/fuzz/biseam_fuzz_"$target" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2048 -malloc_limit_mb=2048 \
    -max_len=65536 -print_final_stats=1 -artifact_prefix="build/fuzz/found/$target-" "build/fuzz/corpus/$target" \
    "fuzz/corpus/$target" >"$log" 2>&1; then
    result='nothing found'
  else
    result="FOUND something, see $log" status=1
    grep -E 'does not hold|runtime error|ERROR: |Test unit written' "$log"
  fi
  awk -v target="$target" -v result="$result" '
    /^stat::number_of_executed_units/ { runs = $2 }
    /^stat::average_exec_per_sec/ { rate = $2 }
    END { printf "%-14s %9d runs, %7d a second: %s\n", target, runs, rate, result }' "$log"
done
exit "$status"
