// The overlap of both lenses, unrolled: a strip in which both show far things at the same place if the camera is right.
#pragma once

#include <opencv2/core.hpp>

#include "calibrate/ring.hpp"

namespace biseam::calibrate {

// Columns go round the axis and begin again at both ends, for windows that reach over them; rows go from the side of lens 1
// to that of lens 0, with the plane between the lenses in the middle.
struct StripSize {
  int around = 0;  // columns of a full turn
  int rows = 0;
  static constexpr int kRepeated = 96;  // columns beyond either end
  int columns() const { return around + 2 * kRepeated; }
  double pixel() const { return 2 * kPi / around; }  // radians
  double t(double x) const { return (x - kRepeated) * pixel(); }
  double b(double y) const { return ((rows - 1) / 2.0 - y) * pixel(); }
};

struct Strip {
  cv::Mat1f light;  // local mean 0, local deviation 1; 0 where nothing is seen
  cv::Mat1b seen;   // 255 or 0
};

// Where the samples of a strip are taken from, for all pictures of a lens.
class Unroller {
 public:
  // The circle's outermost pixels are left out.
  Unroller(const Camera& camera, int index, const StripSize& size);

  Strip unroll(const cv::Mat1b& picture) const;

  // A picture's samples as they are, of any number of channels; 0 where nothing is seen.
  cv::Mat samples(const cv::Mat& picture) const;

 private:
  cv::Mat map_, weights_;
  cv::Mat1b seen_;
  cv::Mat1f share_;  // of what is seen, near each sample
};

}  // namespace biseam::calibrate
