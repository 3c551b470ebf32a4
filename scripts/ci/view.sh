#!/usr/bin/env bash
# The pages of `biseam view` in a browser, and its server.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset release
cmake --build --preset release --target biseam_tool
scripts/test.sh release -R '^view\.'
