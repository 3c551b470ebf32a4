#include "calibrate/panorama.hpp"

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

#include "calibrate/estimate.hpp"

namespace biseam::calibrate {
namespace {

// Never written through.
cv::Mat1b picture_of(const Luma& luma) {
  return cv::Mat1b(luma.height, luma.width, const_cast<std::uint8_t*>(luma.bytes), std::size_t(luma.stride));
}

double mean_of(const cv::Mat& values) { return cv::mean(values)[0]; }

// Mean difference of two rows or columns.
double apart(const cv::Mat1b& a, const cv::Mat1b& b) { return cv::norm(a, b, cv::NORM_L1) / double(a.total()); }

double deviation_of(const cv::Mat1b& a, const cv::Mat1b& b) {
  const double middle = 0.5 * (mean_of(a) + mean_of(b));
  cv::Mat1f squares[2];
  a.convertTo(squares[0], CV_32F, 1, -middle);
  b.convertTo(squares[1], CV_32F, 1, -middle);
  return std::sqrt(0.5 * (mean_of(squares[0].mul(squares[0])) + mean_of(squares[1].mul(squares[1]))));
}

// Code values: what varies by less is no picture; what is darker may be what surrounds circles.
constexpr double kUneven = 12, kDark = 32;

// Each of the outer rows shows one place and a little round it, whatever the picture shows, and not both show nothing.
bool shows_poles(const cv::Mat1b& left, const cv::Mat1b& right) {
  constexpr double kEven = 0.4;  // of the picture's deviation
  const int last = left.rows - 1;
  const double all = deviation_of(left, right), most = kEven * all;
  const double brighter = std::max(mean_of(left.row(0)), mean_of(left.row(last)));
  return all > kUneven && brighter > kDark && deviation_of(left.row(0), right.row(0)) < most &&
         deviation_of(left.row(last), right.row(last)) < most;
}

// The outer sides go on in each other as neighbours do, and neither they nor the columns everywhere look alike: sides of
// pictures with whole circles are dark from end to end.
bool sides_meet(const cv::Mat1b& left, const cv::Mat1b& right) {
  const int last = right.cols - 1;
  const double across = apart(left.col(0), right.col(last));
  const double usual = 0.5 * (apart(left.col(0), left.col(1)) + apart(right.col(last), right.col(last - 1)));
  const double elsewhere =
      0.5 * (apart(left.col(0), left.col(left.cols / 2)) + apart(right.col(last), right.col(right.cols / 2)));
  return across < 1.5 * usual + 2 && elsewhere > 2 * across;
}

}  // namespace

bool is_panorama(const LumaPair& halves) {
  const cv::Mat1b left = picture_of(halves.lens[0]), right = picture_of(halves.lens[1]);
  if (left.size() != right.size() || left.cols != left.rows || left.cols < kLeastSide) return false;
  return shows_poles(left, right) && sides_meet(left, right);
}

}  // namespace biseam::calibrate
