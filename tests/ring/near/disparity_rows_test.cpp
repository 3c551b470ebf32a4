#include "ring/near/disparity_rows.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

TEST(GradientRow, IsTheDifferenceOverTwoSamplesInQuartersOfACode) {
  RandomSource random;
  for (const int width : {5, 8, 17, 41, 56, 512}) {
    const std::size_t n = static_cast<std::size_t>(width);
    std::vector<int16_t> rows[3];
    for (auto& row : rows) {
      for (int b = 0; b < width; ++b) row.push_back(static_cast<int16_t>(random.between(0, kMaxFine)));
    }
    GuardedBlock<int16_t> out(2 * n);
    kGradientRow.best()(rows[0].data(), rows[1].data(), rows[2].data(), out.data(), width);
    for (std::size_t b = 0; b < n; ++b) {
      const bool edge = b == 0 || b == n - 1;
      const double across = edge ? 0 : rows[1][b + 1] - rows[1][b - 1], along = edge ? 0 : rows[2][b] - rows[0][b];
      ASSERT_EQ(out[b], std::floor(across / 16)) << b;
      ASSERT_EQ(out[n + b], std::floor(along / 16)) << b;
    }
  }
}

TEST(CompareRow, SumsSquaresOverTheComparedColumns) {
  RandomSource random;
  for (const StripShape strip : {StripShape{960, 56}, {480, 28}, {960, 13}, {1920, 112}, {4096, 238}}) {
    const NearShape shape = near_shape(strip);
    const std::size_t n = static_cast<std::size_t>(shape.width);
    std::vector<int16_t> gradients[2];
    for (auto& row : gradients) {
      for (std::size_t i = 0; i < 2 * n; ++i) row.push_back(static_cast<int16_t>(random.between(-1024, 1023)));
    }
    GuardedBlock<uint32_t> apart(static_cast<std::size_t>(shape.disparities)),
        both(static_cast<std::size_t>(shape.disparities));
    kCompareRow.best()(gradients[0].data(), gradients[1].data(), shape, apart.data(), both.data());
    for (int d = 0; d < shape.disparities; ++d) {
      int64_t differences = 0, squares = 0;
      for (int b = shape.first; b < shape.first + shape.count; ++b) {
        for (const int gradient : {0, shape.width}) {
          const int64_t x = gradients[0][static_cast<std::size_t>(gradient + b + (d + 1) / 2)];
          const int64_t y = gradients[1][static_cast<std::size_t>(gradient + b - d / 2)];
          differences += (x - y) * (x - y);
          squares += x * x + y * y;
        }
      }
      ASSERT_EQ(apart[static_cast<std::size_t>(d)], differences) << d;
      ASSERT_EQ(both[static_cast<std::size_t>(d)], squares) << d;
      ASSERT_LT(squares, 1 << 29);
    }
  }
}

}  // namespace
}  // namespace biseam::test
