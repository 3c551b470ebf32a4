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
      const int16_t factor = int16_t(std::lround(kLightOne * std::exp2(stops * curve.exponent)));
      for (double code = 0; code < 1; code += 0.003) {
        const double exact = curve.record(std::exp2(stops) * curve.light(code));
        if (exact > 1 || (stops < 0 && code > 0.8)) continue;  // white has a rule of its own
        int16_t sample = int16_t(std::lround(64 * (16 + 219 * code)));
        kMatchRows.scalar(&sample, {1, 1}, &factor, tone, 1);
        // The darkest codes, by a line whose slope is only about the light's: up to 5 % of 8 % of the range.
        ASSERT_NEAR(sample / 64.0, 16 + 219 * exact, code < 0.15 ? 2 : 0.05) << stops << " EV, code " << code;
      }
    }
  }
}

TEST(MatchRows, KeepsBlackAndWhite) {
  const Tone tone = make_tone(Transfer::bt709, false, false);
  for (int16_t factor = kLightOne * 3 / 5; factor <= kMostMatch; factor = int16_t(factor + 101)) {
    int16_t black = 16 << 6, white = 235 << 6, beyond = 250 << 6;
    kMatchRows.scalar(&black, {1, 1}, &factor, tone, 1);
    EXPECT_EQ(black, 16 << 6) << factor;
    if (factor >= kLightOne) continue;
    kMatchRows.scalar(&white, {1, 1}, &factor, tone, 1);
    EXPECT_EQ(white, 235 << 6) << factor;
    kMatchRows.scalar(&beyond, {1, 1}, &factor, tone, 1);
    EXPECT_EQ(beyond, 250 << 6) << factor;
  }
}

TEST(MatchRows, NeverTurnsTheOrderOfCodesRound) {
  for (const Transfer transfer : {Transfer::bt709, Transfer::srgb, Transfer::power, Transfer::log}) {
    const Tone tone = make_tone(transfer, false, false);
    for (int16_t factor = kLightOne * 3 / 5; factor <= kMostMatch; factor = int16_t(factor + 97)) {
      int16_t before = INT16_MIN;
      for (int code = 0; code <= kMaxFine; code += 3) {
        int16_t sample = int16_t(code);
        kMatchRows.scalar(&sample, {1, 1}, &factor, tone, 1);
        ASSERT_GE(sample, before) << factor << " at " << code;
        before = sample;
      }
    }
  }
}

TEST(MatchChromaRows, TintsByLumaButNotWhite) {
  const int16_t factor = kLightOne, share = kLightOne / 16;
  const auto tinted = [&](int luma) {
    int16_t sample = 128 << 6;
    const int16_t fine = int16_t(luma << 6);
    kMatchChromaRows.scalar(&sample, {1, 1}, {{&factor, nullptr}, {&share, nullptr}, &fine, 1, 16 << 6, 235 << 6}, 1, 1);
    return sample - (128 << 6);
  };
  EXPECT_EQ(tinted(16), 0);
  EXPECT_EQ(tinted(5), 0);
  EXPECT_EQ(tinted(116), 100 * 64 / 16);
  EXPECT_EQ(tinted(225), 40 * 64 / 16);
  EXPECT_EQ(tinted(235), 0);
  EXPECT_EQ(tinted(255), 0);
}

// What stands between the rows stays as it is.
TEST(MatchRows, GoFromRowToRow) {
  const Tone tone = make_tone(Transfer::bt709, false, false);
  const std::vector<int16_t> factors = {kLightOne * 3 / 4, kLightOne * 5 / 4};
  std::vector<int16_t> samples, expected;
  for (int i = 0; i < 9; ++i) samples.push_back(static_cast<int16_t>((40 + 20 * i) << 6));
  expected = samples;
  for (int row = 0; row < 3; ++row) kMatchRows.scalar(&expected[std::size_t(3 * row)], {1, 2}, factors.data(), tone, 2);
  kMatchRows.scalar(samples.data(), {3, 3}, factors.data(), tone, 2);
  EXPECT_EQ(samples, expected);
  const std::vector<int16_t> luma = samples;
  const std::vector<int16_t> shares = {kLightOne / 8, -kLightOne / 16};
  MatchChroma chroma{{factors.data(), nullptr}, {shares.data(), nullptr}, luma.data(), 4, 16 << 6, 235 << 6};
  kMatchChromaRows.scalar(samples.data(), {2, 3}, chroma, 1, 2);
  for (int row = 0; row < 2; ++row, chroma.luma += 4) {
    kMatchChromaRows.scalar(&expected[std::size_t(3 * row)], {1, 2}, chroma, 1, 2);
  }
  EXPECT_EQ(samples, expected);
}

TEST(LumaMeans, AreOfTheSamplesThatAChromaSampleStandsFor) {
  const std::vector<uint8_t> bytes = {1, 3, 7, 8, 2, 4, 9, 200};
  int16_t out[4];
  kLumaMeans.scalar({{bytes.data(), bytes.data() + 4}, 2, 2, false, 8, 0}, out, 2);
  EXPECT_EQ(out[0], (1 + 3 + 2 + 4) * 16);
  EXPECT_EQ(out[1], (7 + 8 + 9 + 200) * 16);
  kLumaMeans.scalar({{bytes.data(), nullptr}, 2, 1, false, 8, 0}, out, 2);
  EXPECT_EQ(out[0], 4 * 32);
  kLumaMeans.scalar({{bytes.data(), nullptr}, 1, 1, false, 8, 0}, out, 4);
  EXPECT_EQ(out[3], 8 * 64);
  const std::vector<uint16_t> words = {1023 << 6, 1 << 6};
  kLumaMeans.scalar({{words.data(), nullptr}, 1, 1, true, 10, 6}, out, 2);
  EXPECT_EQ(out[0], 1023 * 16);
  EXPECT_EQ(out[1], 16);
}

TEST(SpreadNodes, GoesLinearlyFromNodeToNode) {
  RandomSource random;
  for (int round = 0; round < 300; ++round) {
    const int bits = random.between(0, 6), apart = 1 << bits, step_bits = 1 + random.between(0, 1),
              count = random.between(1, 64);
    std::vector<int16_t> upper, lower;
    for (int i = 0; i < 64 * 4 + 3; ++i) {
      upper.push_back(int16_t(random.between(-32767, 32767)));
      lower.push_back(int16_t(random.between(-32767, 32767)));
    }
    const int below = random.between(0, apart - 1), start = random.between(0, apart - 1);
    int16_t out[64];
    kSpreadNodes.scalar({upper.data(), lower.data(), below, bits, start, step_bits}, out, count);
    for (int i = 0; i < count; ++i) {
      const double place = double(start + (i << step_bits)) / apart, past = place - std::floor(place);
      const std::size_t column = std::size_t(place);
      const auto down = [&](std::size_t c) { return upper[c] + (lower[c] - upper[c]) * double(below) / apart; };
      ASSERT_EQ(out[i], std::floor(down(column) * (1 - past) + down(column + 1) * past + 0.5)) << bits << " " << i;
    }
  }
}

}  // namespace
}  // namespace biseam::test
