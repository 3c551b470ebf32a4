#!/usr/bin/env bash
# needed_libraries.sh READELF LIBRARY: the shared library needs the C library and its loader, libm and nothing else.
set -euo pipefail
needed=$("$1" -d "$2" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
echo "$needed"
! grep -vxE 'libc\.so\.6|libm\.so\.6|ld-linux[-a-z0-9]*\.so\.[0-9]' <<<"$needed"
