#include "ring/near/near_shape.hpp"

#include <gtest/gtest.h>

#include "ring/near/disparity.hpp"

namespace biseam::test {
namespace {

using namespace ring;

TEST(NearShape, GoesByAnglesNotBySamples) {
  const NearShape shape = near_shape({960, 56});
  EXPECT_EQ(shape.bits, 0);
  EXPECT_EQ(shape.disparities, 13) << "4.5 degrees";
  EXPECT_EQ(shape.count, 17);
  EXPECT_EQ(shape.first + shape.count / 2, 27);
  EXPECT_EQ(shape.reach, 4);
  EXPECT_EQ(near_shape({480, 28}).disparities, 7);
  EXPECT_EQ(near_shape({480, 28}).count, 9);
  const NearShape large = near_shape({1920, 112});
  EXPECT_EQ(large.bits, 1);
  EXPECT_EQ(large.length, 960);
  EXPECT_EQ(large.width, 56);
  EXPECT_EQ(near_shape({4096, 238}).length, 1024);
}

TEST(NearShape, LooksForNothingInNarrowRings) {
  EXPECT_EQ(near_shape({960, 8}).disparities, 1);
  EXPECT_EQ(near_shape({128, 9}).disparities, 1);
  EXPECT_EQ(near_shape({240, 9}).disparities, 3);
  EXPECT_GT(near_shape({960, 13}).disparities, 2);
  EXPECT_EQ(near_shape({96, 5}).disparities, 1);
}

// The columns of every disparity have neighbours in both strips, for gradients, none of them outermost: those show some of the
// black beyond the image circles.
TEST(NearShape, StaysWithinTheStrips) {
  for (int length = 16; length <= kMaxStripLength; length += 16) {
    for (int width = kMinStripWidth; width <= kMaxStripWidth; width += 3) {
      const NearShape shape = near_shape({length, width});
      ASSERT_LE(shape.length, kMostSearchLength);
      ASSERT_LE(shape.disparities, kMostDisparities);
      if (shape.disparities == 1) continue;
      ASSERT_GE(shape.disparities, 3);
      const int largest = shape.disparities - 1;
      ASSERT_GE(shape.first - largest / 2, 2);
      ASSERT_LE(shape.first + shape.count - 1 + (largest + 1) / 2, shape.width - 3);
      ASSERT_LT(2 * shape.reach + 1, shape.length);
      // Half of the largest disparity goes to either lens, and no strip is moved by a third of its width.
      ASSERT_LT(3 * (most_disparity(shape) << shape.bits), 2 * width * kDisparityOne);
    }
  }
}

}  // namespace
}  // namespace biseam::test
