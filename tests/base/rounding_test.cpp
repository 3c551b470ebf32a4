#include "base/rounding.hpp"

#include <gtest/gtest.h>

#include <cfenv>
#include <thread>

namespace biseam::test {
namespace {

// Above and below the middle of two neighbours: where a quotient goes tells how it is rounded.
float rounded_third(float sign) {
  volatile float one = sign, three = 3;
  return one / three;
}

struct ModeOfTheTest {
  ~ModeOfTheTest() { std::fesetround(FE_TONEAREST); }
};

TEST(RoundToNearest, HoldsWhileItLivesAndThenTheOldModeIsBack) {
  const ModeOfTheTest restored;
  const float nearest = rounded_third(1), nearest_below = rounded_third(-1);
  for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    ASSERT_EQ(0, std::fesetround(mode));
    {
      const RoundToNearest guard;
      EXPECT_EQ(FE_TONEAREST, std::fegetround());
      EXPECT_EQ(nearest, rounded_third(1));
      EXPECT_EQ(nearest_below, rounded_third(-1));
      std::thread([] { EXPECT_EQ(FE_TONEAREST, std::fegetround()); }).join();
    }
    EXPECT_EQ(mode, std::fegetround());
  }
}

}  // namespace
}  // namespace biseam::test
