#!/usr/bin/env bash
# The library's tests that `make test` ran with the best instruction set, with each one below; then on the oldest x86-64
# processor, an emulated one that refuses newer instructions.  What tests every version by itself is not repeated, nor on the
# emulated processor what happens without memory or threads, what is measured in whole panoramas, which its instructions don't
# change, which settings are allowed, pictures of 16 million columns, and whole frames and near things in clips, whose bytes the
# golden hashes hold.
set -uo pipefail
cd "$(dirname "$0")/../.."
export GTEST_FILTER='-Versions/*:*Accuracy.*'
status=0
below=()
for isa in scalar avx2 avx512; do
  BISEAM_ISA=$isa build/release/tests/base/biseam_base_tests --gtest_list_tests >/dev/null && below+=("$isa")
done
[ ${#below[@]} -gt 1 ] && unset 'below[-1]'  # the best
for isa in "${below[@]}"; do
  BISEAM_ISA=$isa scripts/test.sh release -L library || status=1
done
if [ "$(uname -m)" = x86_64 ]; then
  GTEST_FILTER+=':MatchedLight.*:Frame.*:PanoramaOptions.*:*UsualRig.*:Stitcher.Random*:Resize.LargeSizes*'
  BISEAM_HOST_ISA=scalar scripts/test.sh release -C Oldest -R '\.oldest$' -E '_(failure|fault|near_frame)_tests' || status=1
fi
exit $status
