#!/usr/bin/env bash
# The manual page is well-formed: no warning from mandoc, none from groff.  That it has every option is among the tests.
set -euo pipefail
cd "$(dirname "$0")/../.."
mandoc -Tlint -Wwarning docs/biseam.1
complaints=$(groff -mdoc -ww -z -Tutf8 docs/biseam.1 2>&1)
[ -z "$complaints" ] || { echo "$complaints"; exit 1; }
