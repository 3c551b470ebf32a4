#include "calibration/report/strips.hpp"

#include <opencv2/core.hpp>

#include "calibrate/strip.hpp"

namespace biseam::tool {
namespace {

constexpr double kMostDifference = 4;  // local standard deviations, painted white

cv::Mat3b view_of(Rgb& picture) {
  return cv::Mat3b(picture.height, picture.width, reinterpret_cast<cv::Vec3b*>(picture.bytes.data()));
}

// Never written through.
cv::Mat1b view_of(const calibrate::Luma& luma) {
  return cv::Mat1b(luma.height, luma.width, const_cast<std::uint8_t*>(luma.bytes), std::size_t(luma.stride));
}

cv::Mat3b painted(const calibrate::Strip (&strips)[2]) {
  cv::Mat1f difference = cv::abs(strips[0].light - strips[1].light);
  difference.setTo(0, ~(strips[0].seen & strips[1].seen));
  cv::Mat1b gray;
  difference.convertTo(gray, CV_8U, 255 / kMostDifference);
  cv::Mat colours;
  cv::merge(std::vector<cv::Mat>(3, gray), colours);
  return colours;
}

}  // namespace

std::array<Rgb, kQuarters> ring_strips(const RecordedPair& pair, const Camera& camera, int columns, double reach) {
  calibrate::StripSize size;
  size.around = columns / kQuarters * kQuarters;
  size.rows = int(2 * reach / size.pixel()) | 1;
  calibrate::Strip strips[2];
  cv::Mat3b rows[3];
  for (int k = 0; k < 2; ++k) {
    const calibrate::Unroller unroller(camera, k, size);
    Rgb colours = pair.colours(k);
    rows[k] = unroller.samples(view_of(colours));
    strips[k] = unroller.unroll(view_of(pair.luma().lens[k]));
  }
  rows[2] = painted(strips);
  std::array<Rgb, kQuarters> quarters;
  const int width = size.around / kQuarters;
  for (int i = 0; i < kQuarters; ++i) {
    Rgb& quarter = quarters[std::size_t(i)] = Rgb(width, 3 * size.rows);
    const int first = calibrate::StripSize::kRepeated + (i + kQuarters / 2) % kQuarters * width;
    for (int row = 0; row < 3; ++row) {
      rows[row].colRange(first, first + width).copyTo(view_of(quarter).rowRange(row * size.rows, (row + 1) * size.rows));
    }
  }
  return quarters;
}

}  // namespace biseam::tool
