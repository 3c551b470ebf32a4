#!/usr/bin/env bash
# Library and tests on 32-bit ARM; the library's programs once more on a processor without NEON, which it has to notice.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset armhf
cmake --build --preset armhf
scripts/test.sh armhf
BISEAM_HOST_ISA=scalar QEMU_CPU=cortex-a15,neon=off GTEST_FILTER="-Versions/*" scripts/test.sh armhf -L library
