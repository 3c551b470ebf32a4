#!/usr/bin/env bash
# The programs that start threads under the thread sanitizer: the library's, and what the tool stitches, pictures and clips, with
# a camera that it finds itself too.  Large pictures, sums over planned blocks, clips cut in many ways or stitched frame by frame
# beside the tool, and loops that one thread runs add nothing but time.
set -euo pipefail
cd "$(dirname "$0")/../.."
programs=(biseam_{base,stages,frame,frame_failure,panorama,panorama_fault,ring_frame,stitch}_tests biseam_golden)
cmake --preset tsan
cmake --build --preset tsan --target "${programs[@]}" biseam_found_camera_tests
left_out=('Versions/*' '*Accuracy.*' 'YuvRead.*' 'Resize.*' 'Samples.*' 'Blocks.*' 'MapRow.*' 'SolveGrid.*' 'FillGrid.*'
  'PickImage.*' '*CombineRows.*' '*Clip.PartsEqualTheWhole*' 'MatchedClip.SeamsAreSteady*' '*.IsWhatTheLibraryMakesOfIt')
GTEST_FILTER=-$(IFS=: && echo "${left_out[*]}") \
  scripts/test.sh tsan -R "^(golden|$(IFS='|' && echo "${programs[*]}"))(\.[0-9])?\$"
status=0
found=$(GTEST_FILTER=StitchWithoutAProfile.FirstPairOfAPipe scripts/test.sh tsan -R '^biseam_found_camera_tests$') || status=$?
echo "$found"
grep -q '^tests: 1 passed' <<<"$found" || status=1
exit $status
