#!/usr/bin/env bash
# Every fuzz target for some seconds, from its corpus: what changed is tried with inputs that nobody wrote.
set -euo pipefail
cd "$(dirname "$0")/../.."
scripts/fuzz.sh 3
