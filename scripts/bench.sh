#!/usr/bin/env bash
# bench.sh [--quick] [--against COMMIT] [--samples DIR]: builds the side-by-side measurements, runs them and leaves tables and
# plot in out/bench/.
#   --quick     only to see that everything works
#   --against   measures the library of an older commit too
#   --samples   measures where the lenses meet in real cameras' pictures, too: those that real_seams.py knows by name
set -euo pipefail
cd "$(dirname "$0")/.."
out=out/bench
build=build/release
quick=() against=() samples=()
while [ $# -gt 0 ]; do
  case $1 in
    --quick) quick=(--quick); out=out/bench-quick; shift ;;
    --against) against=(--against "${2:?--against needs a commit}"); shift 2 ;;
    --samples) samples=(--samples "${2:?--samples needs a folder}"); shift 2 ;;
    *) echo "bench.sh: no option '$1'" >&2; exit 2 ;;
  esac
done

scripts/install_packages.sh build bench
library=
if [ ${#against[@]} -gt 0 ]; then
  commit=$(git rev-parse --short "${against[1]}^{commit}")
  old=$PWD/build/against-$commit
  library=$old/library/src/libbiseam.a
  mkdir -p "$old/source"
  git archive "$commit" CMakeLists.txt cmake include src | tar -x -C "$old/source"
  cmake -S "$old/source" -B "$old/library" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBISEAM_BUILD_TESTS=OFF -DBISEAM_BUILD_TOOL=OFF
  cmake --build "$old/library" --target biseam_static
fi

cmake --preset bench -DBISEAM_BENCH_AGAINST="$library"
cmake --build --preset bench
mkdir -p "$out"
/usr/bin/python3 bench/arm/estimate.py --out "$out/arm.json"
/usr/bin/python3 bench/suite/run.py --build "$build" --out "$out" --arm "$out/arm.json" "${quick[@]}" "${against[@]}" "${samples[@]}"
echo
cat "$out/bench.md"
