#!/usr/bin/env bash
# Library, kernels, whole frames and the checked interface with clang++, optimised; the sanitizers compile everything with it.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset clang -DBISEAM_BUILD_TOOL=OFF
cmake --build --preset clang --target biseam_shared biseam_static biseam_golden biseam_ring_golden biseam_kernels \
  biseam_panorama_tests biseam_panorama_fault_tests biseam_panorama_door_tests
scripts/test.sh clang -R '^((ring_)?golden|kernels|biseam_panorama_.*)$'
