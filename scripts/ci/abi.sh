#!/usr/bin/env bash
# The exported interface against its record, tests/abi/biseam.abi: a change of a signature or of a record it uses fails.  With
# --record: writes the record anew, which is right only for an interface that grew.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset gcc-debug >/dev/null
cmake --build --preset gcc-debug --target biseam_shared
library=build/gcc-debug/src/libbiseam.so
if [ "${1:-}" = --record ]; then
  abidw --drop-undefined-syms --exported-interfaces-only --no-corpus-path --no-comp-dir-path --no-show-locs \
    --type-id-style hash --out-file tests/abi/biseam.abi $library
else
  abidiff --harmless --no-show-locs tests/abi/biseam.abi $library
  echo "The exported interface is the recorded one."
fi
