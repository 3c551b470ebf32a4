#!/usr/bin/env bash
# Library, tool and tests with clang++.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset clang
cmake --build --preset clang
ctest --preset clang -E '^view\.' # a browser can't tell the compilers apart
