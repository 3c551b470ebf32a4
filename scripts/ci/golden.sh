#!/usr/bin/env bash
# An unoptimised build stitches the same bytes as the others, whose tests include the same comparison.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset gcc-debug
cmake --build --preset gcc-debug --target biseam_golden biseam_ring_golden
scripts/test.sh gcc-debug -R '^(ring_)?golden$'
