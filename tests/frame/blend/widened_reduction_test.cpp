#include "frame/blend/widened_reduction.hpp"

#include <gtest/gtest.h>

#include <cstdint>

#include "biseam/biseam.h"
#include "support/blend_formulas.hpp"
#include "support/guarded_block.hpp"

namespace biseam::test {
namespace {

TEST(ReduceWidened, EqualsTheDirectSumsOfTheWidenedSource) {
  RandomSource random;
  for (int round = 0; round < 400; ++round) {
    const int width = random.between(1, 40), height = random.between(1, 20), t = random.between(0, width);
    const int side = random.between(0, 1);
    TestImage source(width, height), band(width + t, height);
    for (int32_t& sample : source.samples()) sample = static_cast<int32_t>(random.word());
    CreatBlend(source.record(), band.record(), t, side);
    const TestImage before = source;
    TestImage out(half_up(width + t), half_up(height), 3, -777);
    GuardedBlock<int32_t> sums(3 * (width + t));
    reduce_widened(*source, t, side, *out, sums.data());
    ASSERT_EQ(reduced(band, out.width(), out.height()).samples(), out.samples())
        << width << " + " << t << " x " << height << ", side " << side;
    ASSERT_EQ(before.samples(), source.samples());
  }
}

}  // namespace
}  // namespace biseam::test
