#!/usr/bin/env bash
# Library and tests on 64-bit ARM, with NEON and without.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset aarch64
cmake --build --preset aarch64
ctest --preset aarch64
BISEAM_ISA=scalar scripts/ci/programs.sh build/aarch64 qemu-aarch64 -L /usr/aarch64-linux-gnu
