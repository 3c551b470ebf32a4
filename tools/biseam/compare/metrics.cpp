#include "compare/metrics.hpp"

#include <cmath>
#include <limits>
#include <numbers>

#include "compare/ssim.hpp"

namespace biseam::tool {

static double decibels(double square_sum, double weight) {
  if (square_sum == 0) return std::numeric_limits<double>::infinity();
  return 10 * std::log10(255.0 * 255.0 * weight / square_sum);
}

Columns all_columns(int width) { return Columns(std::size_t(width), true); }

Columns seam_columns(int width, int seam, double half_width) {
  Columns columns(std::size_t(width), false);
  for (int x = 0; x < width; ++x) {
    columns[std::size_t(x)] = std::abs((x + 1) * 360.0 / width - (seam == 0 ? 90 : 270)) <= half_width;
  }
  return columns;
}

Columns either_column(const Columns& a, const Columns& b) {
  Columns both(a);
  for (std::size_t x = 0; x < both.size(); ++x) both[x] = a[x] || b[x];
  return both;
}

Quality measure(const LumaPair& pair, const Columns& columns) {
  const auto width = std::size_t(pair.size.width), height = std::size_t(pair.size.height);
  double squares = 0, count = 0, weighted_squares = 0, weights = 0;
  for (std::size_t y = 0; y < height; ++y) {
    double row_squares = 0, row_count = 0;
    for (std::size_t x = 0; x < width; ++x) {
      if (!columns[x]) continue;
      const double difference = double(pair.a[y * width + x]) - double(pair.b[y * width + x]);
      row_squares += difference * difference;
      ++row_count;
    }
    const double weight = std::cos(double(y + 1) * std::numbers::pi / double(height) - std::numbers::pi / 2);
    squares += row_squares;
    count += row_count;
    weighted_squares += weight * row_squares;
    weights += weight * row_count;
  }
  return {decibels(squares, count), decibels(weighted_squares, weights), structural_similarity(pair, columns)};
}

}  // namespace biseam::tool
