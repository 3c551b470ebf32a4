#include "picture/orientation.hpp"

#include <algorithm>

#include "picture/quarter_turn.hpp"

namespace biseam::tool {
namespace {

// Left and right exchanged; the two samples of a chroma pair stay in their order.
void mirror(Nv12& picture) {
  const std::ptrdiff_t width = picture.width;
  for (std::ptrdiff_t y = 0; y < picture.height; ++y) {
    const auto row = picture.luma.begin() + y * width;
    std::reverse(row, row + width);
  }
  for (std::ptrdiff_t y = 0; y < picture.height / 2; ++y) {
    const auto row = picture.chroma.begin() + y * width;
    std::reverse(row, row + width);
    for (auto pair = row; pair != row + width; pair += 2) std::iter_swap(pair, pair + 1);
  }
}

}  // namespace

Nv12 upright(Nv12 picture, int orientation) {
  // By how much the picture lies turned clockwise, and whether it is mirrored as well.
  constexpr int kTurn[] = {0, 0, 0, 180, 180, 270, 270, 90, 90};
  constexpr bool kMirrored[] = {false, false, true, false, true, true, false, true, false};
  if (kTurn[orientation] != 0) picture = undo_quarter_turn(picture, kTurn[orientation]);
  if (kMirrored[orientation]) mirror(picture);
  return picture;
}

}  // namespace biseam::tool
