#!/usr/bin/env bash
# Library and tests on 32-bit ARM; the programs whose kernels are chosen at run time once more on a processor without NEON, which
# they have to notice; whole frames are then left to the golden hashes.  Neither what is shown to have the same bits on every
# host is measured again, nor the scalar versions, which are plain C++, with every colour.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset armhf
cmake --build --preset armhf
GTEST_FILTER='-*Accuracy.*:*EveryColour/scalar' scripts/test.sh armhf
BISEAM_HOST_ISA=scalar QEMU_CPU=cortex-a15,neon=off GTEST_FILTER='-Versions/*:Frame.*' \
  scripts/test.sh armhf -R '^((ring_)?golden|biseam_(base|frame)_tests)$'
