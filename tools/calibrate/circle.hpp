// Where the circle lies that a fisheye draws into its picture.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace biseam::calibrate {

// Pixels; an integer is the middle of a pixel.
struct Circle {
  double cx = 0, cy = 0, radius = 0;
  double deviation = 0;  // standard deviation of the rim's points from the circle
  double share = 0;      // of the circumference, where the rim was found on it
};

// The rim against a darker surround, in pictures of the same lens; what is dark in one of them may be bright in another, so
// that their mean is looked at.  Nothing when there is none, as with a circle that fills the picture, or a covered lens.
// frames: of one size, at least one.
std::optional<Circle> find_circle(const std::vector<cv::Mat1b>& frames);

}  // namespace biseam::calibrate
