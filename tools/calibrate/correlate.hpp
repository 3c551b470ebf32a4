// Where one picture shows what another does.
#pragma once

#include <opencv2/core.hpp>

namespace biseam::calibrate {

struct BestPlace {
  cv::Point at;      // of the window's upper left sample
  double score = 0;  // correlation, at most 1
};

// Of all places of the window within the region, which is as large or larger.  What is flat correlates with nothing: 0.
BestPlace best_place(const cv::Mat1f& window, const cv::Mat1f& region);

}  // namespace biseam::calibrate
