#!/usr/bin/env bash
# Library and tests on 32-bit ARM; the choice of kernels at run time and the golden hashes once more on a processor without NEON,
# which they have to notice.  What is shown to have the same bits on every host is not measured again, nor are all colours tried:
# the scalar versions are plain C++, and 64-bit ARM tries those with NEON.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset armhf
cmake --build --preset armhf
GTEST_FILTER='-*Accuracy.*:*EveryColour/*' scripts/test.sh armhf
BISEAM_HOST_ISA=scalar QEMU_CPU=cortex-a15,neon=off scripts/test.sh armhf -R '^((ring_)?golden|biseam_base_tests)$'
