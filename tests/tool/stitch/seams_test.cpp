#include "stitch/seams.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

TEST(SeamMovement, IsTheMeanOverAllRows) {
  EXPECT_EQ(seam_movement({10, 12, 14, 16}, {10, 12, 14, 16}), 0);
  EXPECT_EQ(seam_movement({10, 12, 14, 16}, {12, 12, 10, 16}), 1.5);
  EXPECT_EQ(seam_movement({}, {}), 0);
}

}  // namespace
}  // namespace biseam::tool
