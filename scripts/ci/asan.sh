#!/usr/bin/env bash
# Library, tool and tests under the address, leak and undefined behaviour sanitizers.  Measured
# accuracy runs through code that other tests run through too.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset asan
cmake --build --preset asan
GTEST_FILTER='-*Accuracy.*' scripts/test.sh asan
