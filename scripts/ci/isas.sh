#!/usr/bin/env bash
# The tests that `make test` ran with the best instruction set, with each one below; then on the oldest x86-64 processor, an
# emulated one that refuses newer instructions.
set -uo pipefail
cd "$(dirname "$0")/../.."
status=0
below=()
for isa in scalar avx2 avx512; do
  BISEAM_ISA=$isa build/release/tests/base/biseam_base_tests --gtest_list_tests >/dev/null && below+=("$isa")
done
[ ${#below[@]} -gt 1 ] && unset 'below[-1]'  # the best
for isa in "${below[@]}"; do
  BISEAM_ISA=$isa scripts/ci/programs.sh build/release || status=1
done
if [ "$(uname -m)" = x86_64 ]; then
  scripts/ci/programs.sh build/release qemu-x86_64 -cpu Opteron_G1,-sse3 || status=1
fi
exit $status
