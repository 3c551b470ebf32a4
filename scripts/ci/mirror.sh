#!/usr/bin/env bash
# Tests mirror the tree file for file: src/a/b.cpp has tests/a/b_test.cpp, tools/a/b.cpp and tools/biseam/a/b.cpp have
# tests/tool/a/b_test.cpp.  Versions of a kernel, _avx2, _avx512 and _neon, are tested with its definition.  A test of a header
# alone stands where the header's source would, one of a test's helper beside it, and one source may have further tests whose
# names begin with its own.
set -euo pipefail
cd "$(dirname "$0")/../.."

# Sources without a test of their own.
untested=(
  # Each function hands over to what lies behind it, whose tests call it by its exported name.
  src/stages/{blend,compose,format,image,lens}/door.cpp
  # Parts of the program alone, not of what tests are linked with; tests of commands and of shortage run it.
  tools/biseam/{main,system_calls}.cpp
)
# Tests of a whole room or of the whole tool.
of_rooms=(
  tests/camera/same_bits_test.cpp
  tests/frame/failure_test.cpp
  tests/panorama/fault_test.cpp
  tests/ring/sample/sharpness_test.cpp
  tests/stages/{blend,format,image}/memory_test.cpp
  tests/tool/clip/write/rescue_test.cpp
  tests/tool/commands/{manual,outputs}_test.cpp
  tests/tool/stitch/{samples,shortage}_test.cpp
)

git ls-files src tools tests |
  awk -v untested="${untested[*]}" -v of_rooms="${of_rooms[*]}" '
  function stem_of(path) {  # where its test is, without the ending
    sub(/\.[a-z]+$/, "", path)
    sub(/^src\//, "tests/", path)
    sub(/^tools\/(biseam\/)?/, "tests/tool/", path)
    return path
  }
  function has_source(stem) {
    while (!(stem in sources)) {
      if (!sub(/_[^_\/]*$/, "", stem)) return 0
    }
    return 1
  }
  function complain(path, what) { print path ": " what; bad = 1 }
  BEGIN {
    split(untested, names, " ")
    for (k in names) allowed[names[k]]
    split(of_rooms, names, " ")
    for (k in names) allowed[names[k]]
  }
  { exists[$0] }
  /^tests\/.*_test\.cpp$/ { tests[$0]; next }
  /\.(cpp|hpp)$/ { sources[stem_of($0)] }
  /^(src|tools)\/.*\.cpp$/ && !/_(avx2|avx512|neon)\.cpp$/ { compiled[$0] }
  END {
    for (path in compiled) {
      ++count
      tested = stem_of(path) "_test.cpp" in tests
      if (!tested && !(path in allowed)) complain(path, "has no test " stem_of(path) "_test.cpp")
      if (tested && path in allowed) complain(path, "has a test: it is no exception any more")
    }
    for (path in tests) {
      stem = path
      sub(/_test\.cpp$/, "", stem)
      found = has_source(stem)
      if (!found && !(path in allowed)) complain(path, "there is no source of this name")
      if (found && path in allowed) complain(path, "there is a source of this name: it is no exception")
    }
    for (path in allowed) {
      if (!(path in exists)) complain(path, "is an exception that does not exist")
    }
    printf "mirror: %d sources\n", count
    exit bad || count == 0
  }'
