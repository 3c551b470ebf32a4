#!/usr/bin/env bash
# Library and tests on 64-bit ARM, all of whose processors have NEON.  What is left out is left out on 32-bit ARM too, and for
# the same reasons; and so are whole frames, which the golden hashes hold, and what happens without memory or threads, which
# settings are allowed and pictures of 16 million columns, as sizes are those of the other 64-bit hosts.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset aarch64
cmake --build --preset aarch64
GTEST_FILTER='-*Accuracy.*:*EveryColour/scalar:Frame.*:PanoramaOptions.*:*UsualRig.*:Resize.LargeSizes*' \
  scripts/test.sh aarch64 -E '_failure_tests'
