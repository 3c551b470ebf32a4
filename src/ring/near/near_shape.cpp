#include "ring/near/near_shape.hpp"

#include <algorithm>

namespace biseam::ring {

namespace {

// 4.5 degrees between the lenses' views, 3 degrees to either side across and 1.5 along.
constexpr int kDisparitiesOfTurn = 80, kColumnsOfTurn = 120, kRowsOfTurn = 240;
constexpr int kLeastColumns = 4, kMostColumns = 8, kLeastReach = 2;

}  // namespace

NearShape near_shape(StripShape strip) noexcept {
  NearShape shape{};
  shape.strip = strip;
  while (strip.length >> shape.bits > kMostSearchLength) ++shape.bits;
  shape.length = strip.length >> shape.bits;
  shape.width = strip.width >> shape.bits;
  // Gradients lack the outermost columns, which in narrow rings show some of the black beyond the image circle, so that their
  // neighbours are left out too; and half of the disparity goes to either side.
  const int largest = std::min({shape.length / kDisparitiesOfTurn, (shape.width - 3) / 3, kMostDisparities - 1});
  const int most = (shape.width - 5 - largest) / 2;
  const int half = std::min(std::clamp(shape.length / kColumnsOfTurn, kLeastColumns, kMostColumns), most);
  shape.disparities = half < 1 || largest < 2 ? 1 : largest + 1;
  shape.first = (shape.width - 1) / 2 - half;
  shape.count = 2 * half + 1;
  shape.reach = std::max(shape.length / kRowsOfTurn, kLeastReach);
  return shape;
}

}  // namespace biseam::ring
