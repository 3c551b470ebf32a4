#!/usr/bin/env bash
# Every include runs along the plan of the house.  A room is a folder with everything below it that is not a room of its own, and
# it sees itself, the public headers and the rooms that the plan names for it.  A folder without a room is an error, so that nobody
# adds one without deciding what it may see.
set -euo pipefail
cd "$(dirname "$0")/../.."

check() {  # folder, the folder its includes are written from, then one argument per room: "room: the rooms that it sees"
  local folder=$1 root=$2
  shift 2
  git ls-files "$folder" | grep -E '\.(c|h|cpp|hpp)$' | xargs grep -nE '^ *# *include "' |
    awk -v folder="$folder" -v root="$root" -v plan="$(printf '%s;' "$@")" '
    BEGIN {
      count = split(plan, lines, ";")
      for (i = 1; i < count; ++i) {
        split(lines[i], halves, ":")
        rooms[halves[1]]
        sees[halves[1], halves[1]]
        seen = split(halves[2], names, " ")
        for (k = 1; k <= seen; ++k) sees[halves[1], names[k]]
      }
    }
    function room_of(path) {  # the innermost folder that is a room; without one the whole folder
      sub(/\/?[^\/]*$/, "", path)
      for (room = path; room != "" && !(room in rooms);) {
        if (!sub(/\/[^\/]*$/, "", room)) break
      }
      return room in rooms ? room : path
    }
    {
      split($0, parts, ":")
      from = room_of(substr(parts[1], length(root) + 2))
      match($0, /"[^"]*"/)
      to = room_of(substr($0, RSTART + 1, RLENGTH - 2))
      ++includes
      if (to == "biseam") next  # the public headers
      if (from == "" && to in rooms) next  # the main file
      if (!(from in rooms)) { print parts[1] ":" parts[2] ": the folder " from " is no room"; bad = 1; next }
      if (!(to in rooms)) { print parts[1] ":" parts[2] ": " substr($0, RSTART, RLENGTH) " lies in no room"; bad = 1; next }
      if (!((from, to) in sees)) { print parts[1] ":" parts[2] ": " from " may not see " to; bad = 1 }
    }
    END {
      printf "%s: %d includes\n", folder, includes
      exit bad || includes == 0
    }'
}

in_order() {  # room...: lowest first, each sees all before it
  local room seen=""
  for room; do
    echo "$room:$seen"
    seen+=" $room"
  done
}

status=0
check src src "base:" "stages: base" "camera: base" "frame: stages base" "ring: camera base" \
  "panorama: ring frame camera stages base" || status=1
mapfile -t rooms < <(in_order profile camera calibrate)
check tools/profile tools "${rooms[@]}" || status=1
check tools/calibrate tools "${rooms[@]}" || status=1
# camera: the library's projection, which has no other headers beside it.
mapfile -t rooms < <(in_order tools/biseam profile base camera calibrate text media picture clip/read clip/write setup calibration analysis \
  stitch tag scene sheet compare view options commands)
check tools/biseam tools/biseam "${rooms[@]}" || status=1
# The parser of options takes longer to compile than everything around it.
parsed_in=$(git ls-files -z '*.cpp' '*.hpp' | xargs -0 grep -lE '^ *# *include *[<"]CLI/')
if [ "$parsed_in" != tools/biseam/options/command_line.cpp ]; then
  echo "CLI11 is for one source, which the others call:" $parsed_in
  status=1
fi
scripts/ci/mirror.sh || status=1
exit $status
