#!/usr/bin/env bash
# Library, tool and tests under the address, leak and undefined behaviour sanitizers.  What
# is measured against references in double runs through code that other tests run through too.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset asan
cmake --build --preset asan
GTEST_FILTER='-*Accuracy.*:*AgainstReference.*' scripts/test.sh asan
