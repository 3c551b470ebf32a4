#include "stitch/seam_path.hpp"

#include <algorithm>
#include <cstdlib>

namespace biseam::tool {
namespace {

constexpr std::int32_t kEvenWeight = 32;

// The weights are one side's; the left side's columns are those like the first one.
int columns_left(const BandView& band, int row) {
  const std::int32_t* weights = band.weights + std::ptrdiff_t(row) * band.stride;
  int high = 0;
  for (int x = 0; x < band.width; ++x) high += weights[std::ptrdiff_t(x) * band.step] >= kEvenWeight ? 1 : 0;
  return weights[0] >= kEvenWeight ? high : band.width - high;
}

}  // namespace

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
