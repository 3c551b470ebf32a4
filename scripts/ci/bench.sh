#!/usr/bin/env bash
# The measurements work from end to end: everybody's panorama shows the same thing, and the files are there.  No time is judged.
set -euo pipefail
cd "$(dirname "$0")/../.."
rm -f out/bench-quick/*.*
scripts/bench.sh --quick
for file in bench.json bench.md frame.svg; do
  [ -s "out/bench-quick/$file" ]
done
grep -q '| FFmpeg v360 (remap only) | [0-9.]* |' out/bench-quick/bench.md
grep -q '| ffmpeg, filter v360 (remap only) | [0-9.]* |' out/bench-quick/bench.md
grep -q '</svg>' out/bench-quick/frame.svg
