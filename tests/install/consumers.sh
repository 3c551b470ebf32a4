#!/usr/bin/env bash
# consumers.sh find_package|pkg_config_shared|pkg_config_static|moved_tree: builds the programs of tests/install/consumer against
# the tree in PREFIX and runs them.
set -euo pipefail
source=$(cd "$(dirname "$0")/consumer" && pwd)
build=$WORK/$1
rm -rf "$build"
mkdir -p "$build"

with_pkg_config() {  # flags for pkg-config, then for the compiler
  export PKG_CONFIG_PATH=$PREFIX/$LIBDIR/pkgconfig
  local flags
  flags=$(pkg-config --cflags --libs $1 biseam)
  "$CC" -std=c11 "$source/main.c" -o "$build/use_c" $2 $flags
  "$CXX" -std=c++20 "$source/main.cpp" -o "$build/use_cpp" $2 $flags
  "$build/use_c"
  "$build/use_cpp"
}

with_cmake() {
  "$CMAKE" -S "$source" -B "$build" -G Ninja -DCMAKE_PREFIX_PATH="$1" -DCMAKE_C_COMPILER="$CC" -DCMAKE_CXX_COMPILER="$CXX"
  "$CMAKE" --build "$build"
  for program in shared_c shared_cpp static_c static_cpp; do "$build/use_$program"; done
}

case $1 in
  find_package) with_cmake "$PREFIX" ;;
  pkg_config_shared) LD_LIBRARY_PATH=$PREFIX/$LIBDIR with_pkg_config "" "" ;;
  pkg_config_static) with_pkg_config --static -static ;;
  moved_tree)
    cp -a "$PREFIX" "$build/elsewhere"
    with_cmake "$build/elsewhere"
    ;;
esac
