#!/usr/bin/env bash
# Library and tests on 64-bit ARM; the library's programs once more held to code without NEON.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset aarch64
cmake --build --preset aarch64
scripts/test.sh aarch64
BISEAM_ISA=scalar GTEST_FILTER="-Versions/*" scripts/test.sh aarch64 -L library
