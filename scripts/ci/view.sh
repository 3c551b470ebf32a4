#!/usr/bin/env bash
# The pages of `biseam view` and of calibration in a browser, and the server.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset release
cmake --build --preset release --target biseam_tool
scripts/test.sh release -L browser
