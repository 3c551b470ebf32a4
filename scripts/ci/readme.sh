#!/usr/bin/env bash
# The README keeps its word: its commands run, its programs compile against an installed tree and run.  A block whose first line
# names a file is written to that file.
set -euo pipefail
cd "$(dirname "$0")/../.."
work=$PWD/build/ci/readme
rm -rf "$work"
mkdir -p "$work" out

# Code blocks by number and language: 1.sh, 2.sh, 3.toml, ...
awk -v work="$work" '
  /^```/ { inside = !inside; if (inside) file = work "/" ++count "." substr($0, 4); next }
  inside { print > file }' README.md

programs=0
for block in "$work"/*.{toml,c,cpp}; do
  name=$(sed -nE '1s,^(#|//|/\*) ([^ ]+).*,\2,p' "$block")
  [ -n "$name" ] || { echo "a block of the README has no file name:"; cat "$block"; exit 1; }
  case $name in
    out/*) cp "$block" "$name" ;;
    *) cp "$block" "$work/$name" && programs=$((programs + 1)) ;;
  esac
done
[ "$programs" -eq 4 ]

# `make test` is the first step of .ci/run.
cat "$work"/*.sh | grep -v '^make test$' >"$work/commands"
grep -q '^make demo$' "$work/commands"
bash -euxo pipefail "$work/commands"

cmake --install build/release --prefix "$work/installed"
PKG_CONFIG_PATH=$(dirname "$(find "$work/installed" -name biseam.pc)")
export PKG_CONFIG_PATH
sed -nE 's/^    (flags=|cc |c\+\+ )/\1/p' README.md >"$work/compile"
[ "$(wc -l <"$work/compile")" -eq 4 ]
cd "$work"
unset LD_LIBRARY_PATH
bash -euxo pipefail "$work/compile"
