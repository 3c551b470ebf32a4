#!/usr/bin/env bash
# Library, tool and tests under the address, leak and undefined behaviour sanitizers.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset asan
cmake --build --preset asan
scripts/test.sh asan
