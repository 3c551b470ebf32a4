#!/usr/bin/env bash
# Library and tests on 32-bit ARM; the choice of kernels at run time and the golden hashes once more on a processor without NEON,
# which they have to notice.  What is shown to have the same bits on every host is not measured again, nor are all colours tried:
# the scalar versions are plain C++, and 64-bit ARM tries those with NEON.  How panoramas fail without memory or threads doesn't
# depend on the host; how the frames of boards do is tried here too.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset armhf
cmake --build --preset armhf
GTEST_FILTER='-*Accuracy.*:*EveryColour/*' scripts/test.sh armhf -E '^biseam_panorama_fault_tests$'
BISEAM_HOST_ISA=scalar QEMU_CPU=cortex-a15,neon=off scripts/test.sh armhf -R '^((ring_)?golden|biseam_base_tests)$'
