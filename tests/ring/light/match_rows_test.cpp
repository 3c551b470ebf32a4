#include "ring/light/match_rows.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "ring/light/tone.hpp"
#include "ring/lit_scene.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

double light_of_bt709(double code) { return code < 0.081 ? code / 4.5 : std::pow((code + 0.099) / 1.099, 1 / 0.45); }
double recorded_by_srgb(double light) { return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055; }
double light_of_srgb(double code) { return code <= 0.04045 ? code / 12.92 : std::pow((code + 0.055) / 1.055, 2.4); }

// Of one sample.
int matched(int code, int gain, const Tone& tone) {
  int16_t sample = int16_t(code);
  const int16_t gains = int16_t(gain);
  kMatchRows.scalar(&sample, {1, 1}, {{&gains, &gains, 0, 0}, true, true}, tone, 1);
  return sample;
}

// Codes of light that is g times as strong, by the transfer curves themselves.
TEST(MatchRows, MultipliesLinearLight) {
  struct Curve {
    Transfer transfer;
    double (*record)(double);
    double (*light)(double);
    double exponent;
  };
  for (const Curve& curve : {Curve{Transfer::bt709, recorded_by_bt709, light_of_bt709, 0.45},
                             Curve{Transfer::srgb, recorded_by_srgb, light_of_srgb, 1 / 2.4}}) {
    const Tone tone = make_tone(curve.transfer, false, false);
    for (const double stops : {-1.0, -0.5, -0.1, 0.0, 0.1, 0.5, 1.0}) {
      const int gain = int(std::lround(kMatchOne * (std::exp2(stops * curve.exponent) - 1)));
      // Where f > 1 goes on to white by a third of the slope.
      const double shoulder =
          1 - std::max(0.0, gain * (tone.white - tone.pivot) / (2.0 * kMatchOne * (tone.white - tone.black)));
      for (double code = 0; code < 1; code += 0.003) {
        const double exact = curve.record(std::exp2(stops) * curve.light(code));
        if (exact > shoulder || (stops < 0 && code > 0.8)) continue;  // white has a rule of its own
        const int sample = matched(int(std::lround(64 * (16 + 219 * code))), gain, tone);
        // The darkest codes, by a line whose slope is only about the light's: up to 5 % of 8 % of the range.
        ASSERT_NEAR(sample / 64.0, 16 + 219 * exact, code < 0.15 ? 2 : 0.05) << stops << " EV, code " << code;
      }
    }
  }
}

TEST(MatchRows, KeepBlackAndWhite) {
  const Tone tone = make_tone(Transfer::bt709, false, false);
  for (int gain = kLeastGain; gain <= kMostGain; gain += 101) {
    EXPECT_NEAR(matched(16 << 6, gain, tone), 16 << 6, 1) << gain;
    EXPECT_NEAR(matched(235 << 6, gain, tone), 235 << 6, 2) << gain;
    EXPECT_EQ(matched(250 << 6, gain, tone), 250 << 6) << gain;
  }
}

TEST(MatchRows, NeverTurnTheOrderOfCodesRound) {
  for (const Transfer transfer : {Transfer::bt709, Transfer::srgb, Transfer::power, Transfer::log}) {
    const Tone tone = make_tone(transfer, false, false);
    for (int gain = kLeastGain; gain <= kMostGain; gain += 97) {
      int before = INT16_MIN;
      for (int code = 0; code <= kMaxFine; code += 3) {
        const int now = matched(code, gain, tone);
        ASSERT_GE(now, before - 1) << gain << " at " << code;  // products are rounded one by one
        before = now;
      }
    }
  }
}

// Brighter codes near white stay apart by a third of f at least.
TEST(MatchRows, ClipNothing) {
  for (const bool full_range : {false, true}) {
    const Tone tone = make_tone(Transfer::bt709, false, full_range);
    for (int gain = 1; gain <= kMostGain; gain += 211) {
      const double factor = 1 + double(gain) / kMatchOne;
      for (int code = tone.white / 2; code + 64 < tone.white; code += 5) {
        const int here = matched(code, gain, tone), next = matched(code + 64, gain, tone);
        ASSERT_GE(next - here, 64 * factor / 3 - 2) << gain << " at " << code;
        ASSERT_LT(here, tone.white) << gain << " at " << code;
      }
    }
  }
}

// Rows that are told of one direction only are the same.
TEST(MatchRows, KnowWhetherGainsAreUpOrDown) {
  RandomSource random;
  const Tone tone = make_tone(Transfer::srgb, false, true);
  for (int code = 0; code <= kMaxFine; ++code) {
    for (const bool up : {false, true}) {
      const int16_t gain = int16_t(up ? random.between(0, kMostGain) : random.between(kLeastGain, 0));
      int16_t sample = int16_t(code);
      kMatchRows.scalar(&sample, {1, 1}, {{&gain, &gain, 0, 0}, up, !up}, tone, 1);
      ASSERT_EQ(sample, matched(code, gain, tone)) << gain;
    }
  }
}

// What stands between the rows stays as it is, and every few rows have gains of their own.
TEST(MatchRows, GoFromRowToRow) {
  RandomSource random;
  const Tone tone = make_tone(Transfer::bt709, false, false);
  constexpr int kRows = 11, kCount = 38, kPitch = 41, kBelow = 3000, kStep = 9000;
  std::vector<int16_t> upper, lower, samples;
  for (int i = 0; i < kCount; ++i) {
    upper.push_back(int16_t(random.between(kLeastGain, kMostGain)));
    lower.push_back(int16_t(random.between(kLeastGain, kMostGain)));
  }
  for (int i = 0; i < kRows * kPitch; ++i) samples.push_back(int16_t(random.between(0, kMaxFine)));
  std::vector<int16_t> expected = samples;
  for (int row = 0; row < kRows; ++row) {
    const double below = (kBelow + row / kSharedRows * kStep) / 32768.0;
    for (std::size_t i = 0; i < kCount; ++i) {
      int16_t& sample = expected[std::size_t(row * kPitch) + i];
      sample = int16_t(matched(sample, int(upper[i] + std::floor((lower[i] - upper[i]) * below + 0.5)), tone));
    }
  }
  kMatchRows.scalar(samples.data(), {kRows, kPitch}, {{upper.data(), lower.data(), kBelow, kStep}, true, true}, tone, kCount);
  EXPECT_EQ(samples, expected);
}

}  // namespace
}  // namespace biseam::test
