#include "calibrate/correlate.hpp"

#include <algorithm>
#include <cmath>
#include <opencv2/core/hal/intrin.hpp>
#include <opencv2/imgproc.hpp>

namespace biseam::calibrate {
namespace {

constexpr int kAbreast = 12;           // places whose products are summed side by side
constexpr double kLeastSquare = 1e-6;  // of a window without its mean: less is flat

// Without its mean, of length 1; empty for what is flat.
cv::Mat1f normalised(const cv::Mat1f& window) {
  cv::Mat1f even = window - cv::mean(window)[0];
  const double square = even.dot(even);
  if (square < kLeastSquare) return {};
  even *= 1 / std::sqrt(square);
  return even;
}

// Of the window with what lies below it, at so many places next to each other.
void sum_products(const cv::Mat1f& window, const cv::Mat1f& light, int left, int top, float* sums) {
  cv::v_float32x4 first = cv::v_setzero_f32(), second = first, third = first;
  for (int j = 0; j < window.rows; ++j) {
    const float *factors = window[j], *samples = light[top + j] + left;
    for (int i = 0; i < window.cols; ++i) {
      const cv::v_float32x4 factor = cv::v_setall_f32(factors[i]);
      first = cv::v_muladd(factor, cv::v_load(samples + i), first);
      second = cv::v_muladd(factor, cv::v_load(samples + i + 4), second);
      third = cv::v_muladd(factor, cv::v_load(samples + i + 8), third);
    }
  }
  cv::v_store(sums, first);
  cv::v_store(sums + 4, second);
  cv::v_store(sums + 8, third);
}

}  // namespace

// Windows of matches are small: sums of products take less time than transforms, by which OpenCV would correlate them, and half
// of it where places are few.
BestPlace best_place(const cv::Mat1f& window, const cv::Mat1f& region) {
  BestPlace best;
  const cv::Mat1f even = normalised(window);
  if (even.empty()) return best;
  const int columns = region.cols - window.cols + 1, rows = region.rows - window.rows + 1;
  cv::Mat1f wide;  // so that the last places of a row need no care
  cv::copyMakeBorder(region, wide, 0, 0, 0, (kAbreast - columns % kAbreast) % kAbreast, cv::BORDER_CONSTANT, 0);
  cv::Mat1d sums, squares;
  cv::integral(region, sums, squares, CV_64F, CV_64F);
  const auto within = [&](const cv::Mat1d& sum, int x, int y) {
    return sum(y + window.rows, x + window.cols) - sum(y, x + window.cols) - sum(y + window.rows, x) + sum(y, x);
  };
  const double area = double(window.total());
  for (int y = 0; y < rows; ++y) {
    for (int first = 0; first < columns; first += kAbreast) {
      float products[kAbreast];
      sum_products(even, wide, first, y, products);
      for (int x = first; x < std::min(first + kAbreast, columns); ++x) {
        const double sum = within(sums, x, y), square = within(squares, x, y) - sum * sum / area;
        if (square < kLeastSquare) continue;
        const double score = products[x - first] / std::sqrt(square);
        if (score > best.score) best = {{x, y}, score};
      }
    }
  }
  return best;
}

}  // namespace biseam::calibrate
