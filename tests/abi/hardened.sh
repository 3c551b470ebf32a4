#!/usr/bin/env bash
# hardened.sh READELF FILE [fortified]: can be loaded at any address, all symbols are bound before the first instruction, tables
# of the loader can't be written afterwards, and stacks are guarded; fortified: calls with known bounds are checked as well.
set -euo pipefail
file=$2 fortified=${3:-}
head=$("$1" --wide --file-header "$file") segments=$("$1" --wide --program-headers "$file")
dynamic=$("$1" --wide --dynamic "$file") symbols=$("$1" --wide --dyn-syms "$file")

status=0
expect() {  # WHAT PATTERN TEXT
  grep -qE "$2" <<<"$3" || { echo "$file: $1"; status=1; }
}
expect "is loaded at a fixed address" 'Type: +DYN' "$head"
expect "binds symbols lazily" '\(FLAGS_1\).*\bNOW\b' "$dynamic"
expect "leaves the loader's tables writable" 'GNU_RELRO' "$segments"
expect "has an executable stack" 'GNU_STACK.* RW ' "$segments"
expect "has no guarded stacks" 'UND __stack_chk_(fail|guard)' "$symbols"
[ -z "$fortified" ] || expect "has no checked calls" 'UND __[a-z]+_chk' "$symbols"
exit $status
