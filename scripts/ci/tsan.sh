#!/usr/bin/env bash
# The stages that start threads, under the thread sanitizer.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset tsan
cmake --build --preset tsan --target biseam_engine_tests biseam_blend_tests biseam_geometry_tests biseam_stitcher_tests
ctest --preset tsan -E '_NOT_BUILT$|^(abi|install|tool|golden)\.'
