#!/usr/bin/env bash
# programs.sh BUILD [LAUNCHER...]: runs the library's built test programs, through the launcher where one is given, and counts
# their tests.  For one more way to run what is built: ctest would start a process for every test.
set -uo pipefail
build=$1
shift
passed=0 failed=0 skipped=0
count() { sed -nE "s/^\[ +$1 +\] ([0-9]+) tests?.*/\1/p" "$log" | head -n 1; }
log=$(mktemp)
trap 'rm -f "$log"' EXIT

for program in "$build"/tests/{base,stages,frame,panorama}/biseam_*_tests; do
  status=0
  "$@" "$program" >"$log" 2>&1 || status=$?
  cat "$log"
  good=$(count PASSED) bad=$(count FAILED) left=$(count SKIPPED)
  [ "$status" -ne 0 ] && [ "${bad:-0}" -eq 0 ] && bad=1
  passed=$((passed + ${good:-0})) failed=$((failed + ${bad:-0})) skipped=$((skipped + ${left:-0}))
done
for program in "$build/tests/golden/biseam_golden tests/golden/hashes.txt" "$build/tests/kernels/biseam_kernels"; do
  # shellcheck disable=SC2086
  if "$@" $program >"$log" 2>&1; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
  tail -n 20 "$log"
done

echo "test programs: $passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
