#!/usr/bin/env bash
# Library and tests under the thread sanitizer.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset tsan
cmake --build --preset tsan
ctest --preset tsan
