#!/usr/bin/env bash
# Every include runs along the plan of the house: down to a lower storey, or to a room of its own storey that it may see.  A line
# of the list is a storey, its rooms, which see each other, and the lowest comes first.  A folder without a place is an error, so
# that new ones are thought about.
set -euo pipefail
cd "$(dirname "$0")/../.."

check() {  # root, storeys: lowest first, rooms of one storey joined by commas
  local root=$1
  shift
  git ls-files "$root" | grep -E '\.(c|h|cpp|hpp)$' | xargs grep -nE '^ *# *include "' | awk -v root="$root" -v storeys="$*" '
    BEGIN {
      count = split(storeys, lines, " ")
      for (i = 1; i <= count; ++i) {
        rooms = split(lines[i], names, ",")
        for (k = 1; k <= rooms; ++k) level[names[k]] = i
      }
    }
    function room_of(path) { return path ~ /\// ? substr(path, 1, index(path, "/") - 1) : "" }
    {
      split($0, parts, ":")
      from = room_of(substr(parts[1], length(root) + 2))
      match($0, /"[^"]*"/)
      to = room_of(substr($0, RSTART + 1, RLENGTH - 2))
      ++includes
      if (to == "biseam") next  # the gates, which every storey may see
      if (from == "" && to in level) next  # the main file
      if (!(from in level)) { print parts[1] ":" parts[2] ": the folder " from " has no storey"; bad = 1; next }
      if (!(to in level)) { print parts[1] ":" parts[2] ": " substr($0, RSTART, RLENGTH) " lies in no storey"; bad = 1; next }
      if (level[to] > level[from]) { print parts[1] ":" parts[2] ": " from " looks up to " to; bad = 1 }
    }
    END {
      printf "%s: %d includes\n", root, includes
      exit bad || includes == 0
    }'
}

status=0
check src base camera ring stages frame panorama || status=1
exit $status
