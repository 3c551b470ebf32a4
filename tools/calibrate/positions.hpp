// Where the samples of a picture lie in another one, when that is expensive to tell.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "camera/projector.hpp"

namespace biseam::calibrate {

// Positions are found at every kStep'th sample and lie on cubics through four of those in between.  Such a cubic errs by at
// most 3/128 of the fourth derivative times the fourth power of the distance: on a circle round the ring by a millionth of a
// pixel in a strip of 5120 columns, by 0.00003 pixels in one of 960.
class Positions {
 public:
  static constexpr int kStep = 8;

  // exact: the ImagePoint of a column and a row, which go from -kStep to kStep beyond the last one.
  template <class Exact>
  Positions(cv::Size size, const Exact& exact)
      : size_(size), nodes_((size.height - 1) / kStep + 4, (size.width - 1) / kStep + 4) {
    for (int y = 0; y < nodes_.rows; ++y) {
      for (int x = 0; x < nodes_.cols; ++x) {
        const ImagePoint at = exact((x - 1) * kStep, (y - 1) * kStep);
        nodes_(y, x) = {at.x, at.y, at.angle};
      }
    }
  }

  // use: takes each sample's column and row, and its ImagePoint.
  template <class Use>
  void each(const Use& use) const {
    std::vector<cv::Vec3d> row(std::size_t(nodes_.cols));
    for (int y = 0; y < size_.height; ++y) {
      for (int x = 0; x < nodes_.cols; ++x) {
        cv::Vec3d column[4];
        for (int j = 0; j < 4; ++j) column[j] = nodes_(y / kStep + j, x);
        row[std::size_t(x)] = between(column, y % kStep);
      }
      for (int x = 0; x < size_.width; ++x) {
        const cv::Vec3d at = between(&row[std::size_t(x / kStep)], x % kStep);
        use(x, y, ImagePoint{at[0], at[1], at[2]});
      }
    }
  }

 private:
  // nodes: the four around a sample, which is so many samples beyond the second one.
  static cv::Vec3d between(const cv::Vec3d* nodes, int beyond) {
    const double f = double(beyond) / kStep, before = f + 1, next = 1 - f, after = 2 - f;
    const double outer = -f * next / 6, inner = before * after / 2;
    return (outer * after) * nodes[0] + (outer * before) * nodes[3] + (inner * next) * nodes[1] + (inner * f) * nodes[2];
  }

  cv::Size size_;
  cv::Mat3d nodes_;
};

}  // namespace biseam::calibrate
