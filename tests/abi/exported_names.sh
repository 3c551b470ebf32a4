#!/usr/bin/env bash
# exported_names.sh NM LIBRARY SOURCE_DIR: the library exports what src/biseam.map lists, no more and no less, under version
# BISEAM_1, and the C names are those that biseam.h and panorama.h declare.
set -euo pipefail
nm=$1 library=$2 source=$3

listed=$(sed -n '/global:/,/local:/s/^ *\([A-Za-z0-9_]*\);$/\1/p' "$source/src/biseam.map" | sort)
declared=$(cat "$source"/include/biseam/{biseam,panorama}.h | tr '\n' ' '  | grep -o 'BISEAM_API [^;(]*(' | sed 's/ *($//; s/.*[ *]//' | sort)
exported=$("$nm" -D --defined-only "$library" | awk '$2 != "A" { print $3 }' | sort)

status=0
diff <(sed 's/$/@@BISEAM_1/' <<<"$listed") <(cat <<<"$exported") ||
  { echo "'<' is listed in src/biseam.map only, '>' exported only"; status=1; }
diff <(grep -v '^_Z' <<<"$listed") <(cat <<<"$declared") ||
  { echo "'<' is listed in src/biseam.map only, '>' declared in a header only"; status=1; }
echo "$(wc -l <<<"$exported") names exported"
exit $status
