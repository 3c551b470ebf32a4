#include "stitch/seam_path.hpp"

#include <algorithm>
#include <cstdlib>

namespace biseam::tool {
namespace {

// The left side's columns are those like the first one.
int columns_left(const BandView& band, int row) {
  int counted = 0;
  for (int x = 0; x < band.width; ++x) counted += is_counted_side(band, x, row) ? 1 : 0;
  return is_counted_side(band, 0, row) ? counted : band.width - counted;
}

}  // namespace

bool is_counted_side(const BandView& band, int x, int y) {
  constexpr std::int32_t kEvenWeight = 32;
  return band.weights[std::ptrdiff_t(y) * band.stride + std::ptrdiff_t(x) * band.step] >= kEvenWeight;
}

SeamPath seam_path(const Stitcher& stitcher) {
  SeamPath path;
  for (int index = 0; index < 2; ++index) {
    const BandView band = stitcher.band(index);
    for (int row = 0; row < band.height; ++row) path.push_back(columns_left(band, row));
  }
  return path;
}

double seam_movement(const SeamPath& from, const SeamPath& to) {
  const std::size_t rows = std::min(from.size(), to.size());
  if (rows == 0) return 0;
  double sum = 0;
  for (std::size_t row = 0; row < rows; ++row) sum += std::abs(from[row] - to[row]);
  return sum / double(rows);
}

}  // namespace biseam::tool
