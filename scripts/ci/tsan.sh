#!/usr/bin/env bash
# The programs that start threads under the thread sanitizer: the library's, and the tool over clips.  Blocks of gigabytes, which
# it fills with its marks one by one, are asked for by tests that start none.
set -euo pipefail
cd "$(dirname "$0")/../.."
programs=(biseam_{base,stages,frame,frame_failure,panorama,panorama_fault,ring_frame,clip}_tests biseam_golden)
cmake --preset tsan
cmake --build --preset tsan --target "${programs[@]}"
GTEST_FILTER='-Versions/*:*Accuracy.*:Create.*:GetMemSize.*:YuvRead.*:Resize.*' scripts/test.sh tsan -R "^(golden|$(IFS='|' && echo "${programs[*]}"))(\.[0-9])?\$"
