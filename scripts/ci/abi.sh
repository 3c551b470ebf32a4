#!/usr/bin/env bash
# The exported interface against its record, tests/abi/biseam.abi: a change of a signature or of a record it uses fails.  With
# --record: writes the record anew, which is right only for an interface that grew.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake -S . -B build/abi -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=g++ \
  -DCMAKE_CXX_FLAGS="-ffile-prefix-map=$PWD/=" -DBISEAM_BUILD_TOOL=OFF -DBISEAM_BUILD_TESTS=OFF >/dev/null
cmake --build build/abi --target biseam_shared
library=build/abi/src/libbiseam.so
if [ "${1:-}" = --record ]; then
  abidw --drop-undefined-syms --exported-interfaces-only --no-corpus-path --no-comp-dir-path --no-show-locs \
    --type-id-style hash --out-file tests/abi/biseam.abi $library
else
  abidiff --harmless --no-show-locs tests/abi/biseam.abi $library
  echo "The exported interface is the recorded one."
fi
