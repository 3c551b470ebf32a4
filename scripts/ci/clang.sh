#!/usr/bin/env bash
# Library and tests with clang++, optimised; the tool is built with it for the sanitizers.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset clang -DBISEAM_BUILD_TOOL=OFF
cmake --build --preset clang
ctest --preset clang
