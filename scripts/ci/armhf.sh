#!/usr/bin/env bash
# Library and tests on 32-bit ARM with NEON.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset armhf
cmake --build --preset armhf
ctest --preset armhf
