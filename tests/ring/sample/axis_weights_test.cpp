#include "ring/sample/axis_weights.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>

#include "ring/sample/formulas.hpp"

namespace biseam::test {

using namespace ring;

namespace {

constexpr int kCount = static_cast<int>(std::size(kWidenings));
constexpr Quality kQualities[] = {Quality::fast, Quality::good, Quality::best};

template <class Check>
void for_each_table(Check check) {
  for (const Quality quality : kQualities) {
    for (int widening = 0; widening < kCount; ++widening) {
      SCOPED_TRACE(testing::Message() << "quality " << static_cast<int>(quality) << ", widened by " << kWidenings[widening]);
      check(axis_weights(quality, widening), quality, widening);
    }
  }
}

TEST(AxisWeights, EveryPhaseAddsUpExactly) {
  for_each_table([](const AxisWeights& axis, Quality, int) {
    for (int phase = 0; phase < axis.phases(); ++phase) {
      int sum = 0, magnitude = 0;
      for (int k = 0; k < axis.padded_taps; ++k) {
        const int weight = axis.words[phase * axis.padded_taps + k];
        sum += weight, magnitude += std::abs(weight);
        EXPECT_TRUE(k < axis.taps || weight == 0);
      }
      EXPECT_EQ(sum, kTapsOne);
      EXPECT_LE(2 * magnitude, 3 * kTapsOne);
    }
  });
}

TEST(AxisWeights, AreTheFormulasRounded) {
  for_each_table([](const AxisWeights& axis, Quality quality, int widening) {
    for (int phase = 0; phase < axis.phases(); ++phase) {
      double sum = 0;
      const double at = axis.before + static_cast<double>(phase) / axis.phases();
      for (int k = -200; k < axis.taps + 200; ++k) sum += widened(quality, widening, k - at);
      for (int k = -200; k < axis.taps + 200; ++k) {
        const int weight = k >= 0 && k < axis.taps ? axis.words[phase * axis.padded_taps + k] : 0;
        EXPECT_NEAR(weight, widened(quality, widening, k - at) / sum * kTapsOne, 1.0);
      }
    }
  });
}

TEST(AxisWeights, PartsMakeTheWeights) {
  for_each_table([](const AxisWeights& axis, Quality, int) {
    for (int phase = 0; phase < axis.phases(); ++phase) {
      for (int k = 0; k < axis.taps; ++k) {
        const int high = axis.parts[2 * k * axis.phases() + phase], low = axis.parts[(2 * k + 1) * axis.phases() + phase];
        EXPECT_EQ(128 * high + low, axis.words[phase * axis.padded_taps + k]);
        EXPECT_LE(std::abs(high), 64);
        EXPECT_LE(std::abs(low), 64);
      }
    }
  });
}

// Sums of two products with bytes fit 16 bits.
TEST(AxisWeights, PartsOfNeighboursDoNotOverflow) {
  for_each_table([](const AxisWeights& axis, Quality, int) {
    for (int i = 0; i < axis.taps / 2 * 2 * axis.phases(); ++i) {
      const int pair = i / (2 * axis.phases()), at = i % (2 * axis.phases());
      const int8_t* const parts = axis.parts + 4 * pair * axis.phases() + at;
      const int a = parts[0], b = parts[2 * axis.phases()];
      EXPECT_LE(255 * (std::max(a, 0) + std::max(b, 0)), INT16_MAX);
      EXPECT_GE(255 * (std::min(a, 0) + std::min(b, 0)), INT16_MIN);
    }
  });
}

// The vector versions leave the lower part of these out.
TEST(AxisWeights, FastOnesAreMultiplesOf128) {
  const AxisWeights& axis = axis_weights(Quality::fast, 0);
  for (int phase = 0; phase < axis.phases(); ++phase) {
    for (int k = 0; k < axis.taps; ++k) EXPECT_EQ(axis.words[phase * axis.padded_taps + k] % 128, 0);
  }
}

TEST(AxisWeights, WidenAsThePictureShrinks) {
  EXPECT_EQ(widening_for(0.3), 0);
  EXPECT_EQ(widening_for(1.0), 0);
  EXPECT_EQ(widening_for(1.55), 0);
  EXPECT_EQ(kWidenings[widening_for(1.6)], 1.5);
  EXPECT_EQ(kWidenings[widening_for(1.84)], 2);
  EXPECT_EQ(kWidenings[widening_for(2.0)], 2);
  EXPECT_EQ(kWidenings[widening_for(1e9)], 64);
  EXPECT_EQ(widening_for(std::nan("")), 0);
  for (double scale = 1.551; scale < 70; scale *= 1.003) {
    const int widening = widening_for(scale);
    EXPECT_GE(kWidenings[widening] * 1.1, scale);
    EXPECT_TRUE(widening == 1 || kWidenings[widening - 1] * 1.1 < scale);
  }
}

}  // namespace

}  // namespace biseam::test
