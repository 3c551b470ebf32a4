#!/usr/bin/env bash
# Installs what is missing of the Debian 12 packages that a task needs; says nothing when all are there.
#   install_packages.sh [tool|build|check|cross|bench|browser]...     build alone when nothing is named
set -euo pipefail

tool=(
  cmake g++ ninja-build pkg-config
  libgtest-dev                                              # tests
  libavcodec-dev libavformat-dev libavutil-dev libswscale-dev # the tool's pictures and videos
  libexiv2-dev                                              # what its pictures say about themselves
  libcli11-dev libtomlplusplus-dev                          # its command line and profiles
  libopencv-core-dev libopencv-imgproc-dev                  # its calibration
)
build=("${tool[@]}" libmicrohttpd-dev ca-certificates) # the viewer, served and bundled
# Node and npm, which bundle the viewer, are often there from elsewhere and then clash with Debian's.
{ command -v node && command -v npm; } >/dev/null || build+=(nodejs npm)
check=(ccache clang lld clang-format clang-tidy libclang-rt-dev abigail-tools git mandoc groff-base)
browser=(chromium ffmpeg fonts-dejavu-core)
cross=(g++-aarch64-linux-gnu g++-arm-linux-gnueabihf googletest qemu-user)
bench=(git ffmpeg libavfilter-dev libopencv-dev valgrind llvm python3-matplotlib python3-opencv g++-aarch64-linux-gnu g++-arm-linux-gnueabihf)

wanted=()
for set in "${@:-build}"; do
  case $set in
    tool) wanted+=("${tool[@]}") ;;
    build) wanted+=("${build[@]}") ;;
    check) wanted+=("${check[@]}") ;;
    bench) wanted+=("${bench[@]}") ;;
    cross) wanted+=("${cross[@]}") ;;
    browser) wanted+=("${browser[@]}") ;;
    *) echo "install_packages.sh: no package set '$set'" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${wanted[@]}"; do
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "install_packages.sh: as root, run: apt-get install ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
echo "Installing ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
{
  "${as_root[@]}" apt-get -q update &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y --no-install-recommends install "${missing[@]}"
} >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
