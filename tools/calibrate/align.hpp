// A first guess of the camera: good to some pixels of a reduced strip.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "calibrate/calibrate.hpp"
#include "calibrate/solve.hpp"

namespace biseam::calibrate {

// What both lenses recorded at the same time.
struct Pair {
  cv::Mat1b lens[2];
};

struct Alignment {
  Values values{};
  Frame frame;
  std::vector<Match> matches;  // that agree with each other
};

// Tries lenses of several kinds, the guesses, and so many quarter turns of lens 1's picture.  Nothing where none makes the
// strips agree.
std::optional<Alignment> align(const std::vector<Pair>& pairs, const std::vector<Values>& guesses, const Frame& frame,
                               int quarters, const ShareWork& share_work);

}  // namespace biseam::calibrate
