#!/usr/bin/env bash
# Runs clang-tidy over the library and the tool.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset clang -B build/tidy -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
git ls-files 'src/*.cpp' 'tools/*.cpp' | xargs -n 4 -P "$(nproc)" clang-tidy -p build/tidy --quiet
