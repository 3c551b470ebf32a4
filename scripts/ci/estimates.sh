#!/usr/bin/env bash
# The portable estimates of lens tables against the ARM instructions, on a sample of operands (all of them take an hour).
set -euo pipefail
cd "$(dirname "$0")/../.."
mkdir -p build/ci
source=tests/geometry/estimate_proof.cpp
arm-linux-gnueabihf-g++ -std=c++20 -O2 -march=armv7-a -mfpu=neon -static -Isrc $source -o build/ci/estimate_proof_arm
aarch64-linux-gnu-g++ -std=c++20 -O2 -static -Isrc $source -o build/ci/estimate_proof_arm64
qemu-arm build/ci/estimate_proof_arm 997
qemu-aarch64 build/ci/estimate_proof_arm64 997
