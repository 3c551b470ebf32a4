#include "picture/orientation.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

// Where the sample that is to be seen at x, y lies in the stored picture of w x h.
std::pair<int, int> stored_at(int orientation, int x, int y, int w, int h) {
  switch (orientation) {
    case 2:
      return {w - 1 - x, y};
    case 3:
      return {w - 1 - x, h - 1 - y};
    case 4:
      return {x, h - 1 - y};
    case 5:
      return {y, x};
    case 6:
      return {y, h - 1 - x};
    case 7:
      return {w - 1 - y, h - 1 - x};
    case 8:
      return {w - 1 - y, x};
    default:
      return {x, y};
  }
}

TEST(Orientation, AllEightAreUndone) {
  Nv12 stored(10, 6);
  for (std::size_t k = 0; k < stored.luma.size(); ++k) stored.luma[k] = std::uint8_t(k);
  for (std::size_t k = 0; k < stored.chroma.size(); ++k) stored.chroma[k] = std::uint8_t(100 + k);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(orientation);
    const Nv12 seen = upright(stored, orientation);
    ASSERT_EQ(seen.width, orientation < 5 ? 10 : 6);
    ASSERT_EQ(seen.height, orientation < 5 ? 6 : 10);
    for (int y = 0; y < seen.height; ++y) {
      for (int x = 0; x < seen.width; ++x) {
        const auto [u, v] = stored_at(orientation, x, y, 10, 6);
        ASSERT_EQ(seen.luma[std::size_t(y * seen.width + x)], stored.luma[std::size_t(v * 10 + u)]) << x << ' ' << y;
        if (x >= seen.width / 2 || y >= seen.height / 2) continue;
        const auto [cu, cv] = stored_at(orientation, x, y, 5, 3);
        for (int k = 0; k < 2; ++k) {
          ASSERT_EQ(seen.chroma[std::size_t(y * seen.width + 2 * x + k)], stored.chroma[std::size_t(cv * 10 + 2 * cu + k)]);
        }
      }
    }
  }
}

}  // namespace
}  // namespace biseam::tool
