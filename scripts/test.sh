#!/usr/bin/env bash
# test.sh PRESET [ARGUMENT OF CTEST...]: runs the tests of a build and counts them.  A GoogleTest program is one entry of ctest
# and as many tests as it ran; one that ended otherwise than it says counts one failure.
set -uo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
log=build/$preset/Testing/Temporary/LastTest.log
rm -f "$log"
status=0
ctest --preset "$preset" --no-tests=error "$@" || status=$?
awk -v status=$status '
  /^[0-9]+\/[0-9]+ Test(ing)?: / { closed = ran = good = skips = 0 }
  /^\[==========\] [0-9]+ tests? from .* ran\./ { closed = 1; ran = $2 }
  /^\[  PASSED  \] [0-9]+ tests?\./ { good = $4 }
  /^\[  SKIPPED \] [0-9]+ tests?/ { skips = $4 }
  /^  YOU HAVE [0-9]+ DISABLED TESTS?/ { disabled += $3 }
  /^Test Passed\.$/ { passed += closed ? good : 1; skipped += skips }
  /^Test Skipped/ { ++skipped }
  /^Test Failed/ { bad = ran - good - skips; passed += good; skipped += skips; failed += bad > 0 ? bad : 1 }
  END {
    if (status != 0 && failed == 0) failed = 1
    printf "tests: %d passed, %d failed, %d skipped\n", passed, failed, skipped + disabled
  }' "$log"
exit "$status"
