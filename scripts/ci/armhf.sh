#!/usr/bin/env bash
# Library and tests on 32-bit ARM; the choice of kernels at run time and the golden hashes once more on a processor without NEON,
# which they have to notice.  What is shown to have the same bits on every host is not measured again, nor are all colours tried
# with scalar versions, which are plain C++.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset armhf
cmake --build --preset armhf
GTEST_FILTER='-*Accuracy.*:*EveryColour/scalar' scripts/test.sh armhf
BISEAM_HOST_ISA=scalar QEMU_CPU=cortex-a15,neon=off scripts/test.sh armhf -R '^((ring_)?golden|biseam_base_tests)$'
