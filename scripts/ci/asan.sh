#!/usr/bin/env bash
# Library, tool and tests under the address, leak and undefined behaviour sanitizers.  Left out are tests that run through code
# which others run through too: what is measured against references or the truth, every colour and flat pictures of every
# format, what is planned for every block, the second of two names of one container, the same bytes from any number of threads
# and from parts of a clip; and random damage, with which the fuzz targets go on under the same sanitizers.
set -euo pipefail
cd "$(dirname "$0")/../.."
cmake --preset asan
cmake --build --preset asan
left_out=('*Accuracy.*' '*AgainstReference.*' 'CalibrateSamples.*' '*SameScene.*' 'MatchedClip.SeamsAreSteady*'
  '*EveryColour/*' 'Frames.OfFlatPicturesAreFlat' 'Blocks.*' 'Clips/Rescue.*/mov'
  '*.PartsEqualTheWhole*' '*.OfAPartEqualsTheWhole*' '*ForEveryThreadCount/*' '*AnyThreads*' 'AnalysedClip.IsAnalysedTheSame*'
  '*HoweverTheWorkIsShared' '*.RandomDamageEndsInALine/*')
GTEST_FILTER=-$(IFS=: && echo "${left_out[*]}") scripts/test.sh asan
