#!/usr/bin/env bash
# The sources are laid out as clang-format lays them out.
set -euo pipefail
cd "$(dirname "$0")/../.."
git ls-files -z '*.c' '*.h' '*.cpp' '*.hpp' | xargs -0 clang-format --dry-run -Werror
