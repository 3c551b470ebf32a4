#!/usr/bin/env bash
# Library and tests on 64-bit ARM.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset aarch64
cmake --build --preset aarch64
ctest --preset aarch64
