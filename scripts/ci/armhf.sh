#!/usr/bin/env bash
# Library and tests on 32-bit ARM, with NEON and without.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset armhf
cmake --build --preset armhf
ctest --preset armhf
BISEAM_ISA=scalar scripts/ci/programs.sh build/armhf qemu-arm -L /usr/arm-linux-gnueabihf
