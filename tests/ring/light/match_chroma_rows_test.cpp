#include "ring/light/match_chroma_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "ring/light/tone.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

// Of one sample of luma, or of red or blue.
int matched(int code, int gain, const Tone& tone) {
  int16_t sample = int16_t(code);
  const int16_t gains = int16_t(gain);
  kMatchRows.scalar(&sample, {1, 1}, {{&gains, &gains, 0, 0}, true, true}, tone, 1);
  return sample;
}

// Of one sample of chroma.
int matched_chroma(int code, int channel, int gain, int share, int luma, const Tone& tone) {
  int16_t sample = int16_t(code);
  const int16_t fine = int16_t(luma), gains = int16_t(gain), shares = int16_t(share);
  kMatchChromaRows.scalar(
      &sample, {1, 1}, {{{&gains, &gains, 0, 0}, true, true}, {&shares, &shares, 0, 0}, &fine, 1, {channel, channel}}, tone, 1);
  return sample;
}

constexpr int kMiddle = 128 << 6;

TEST(MatchChromaRows, TintByLumaButNotWhite) {
  const Tone tone = make_tone(Transfer::bt709, false, false);
  const auto tinted = [&](int luma) { return matched_chroma(kMiddle, 1, 0, kMatchOne / 16, luma << 6, tone) - kMiddle; };
  EXPECT_EQ(tinted(16), 0);
  EXPECT_EQ(tinted(5), 0);
  EXPECT_EQ(tinted(116), 100 * 64 / 16);
  EXPECT_EQ(tinted(225), 40 * 64 / 16);
  EXPECT_EQ(tinted(235), 0);
  EXPECT_EQ(tinted(255), 0);
}

TEST(MatchChromaRows, MultiplyChroma) {
  const Tone tone = make_tone(Transfer::bt709, false, false);
  for (const int gain : {kLeastGain, -500, 0, 300, kMostGain}) {
    for (int code = 28; code <= 228; code += 10) {
      const double exact = kMiddle + (1 + double(gain) / kMatchOne) * ((code - 128) << 6);
      if (gain > 0 && code > 150) continue;  // colours that come near white
      for (const int channel : {1, 2}) {
        ASSERT_NEAR(matched_chroma(code << 6, channel, gain, 0, 40 << 6, tone),
                    std::clamp(exact, kMiddle - 8500.0, kMiddle + 8500.0), 1.5)
            << gain;
      }
    }
  }
}

// Where chroma takes blue or red near white, the colour goes to it as a row of its own codes would.
TEST(MatchChromaRows, TakeNoColourBeyondWhite) {
  for (const bool full_range : {false, true}) {
    const Tone tone = make_tone(Transfer::bt709, false, full_range);
    const double scale = full_range ? 1 : 219.0 / 224, reaches[] = {0, 1.8556 * scale, 1.5748 * scale};
    for (const int channel : {1, 2}) {
      for (const int gain : {200, 1000, 4000}) {
        for (int luma = 110 << 6; luma < tone.white - 40 * 64; luma += 777) {
          for (int colour = luma; colour < tone.white; colour += 99) {
            const double chroma = (colour - luma) / reaches[channel];
            if (chroma > 7000 || luma + gain > tone.white - 50 * 64) continue;
            const int lit = luma + (luma - tone.pivot) * gain / kMatchOne, alone = matched(colour, gain, tone);
            if (lit > matched(luma, gain, tone) + 2) continue;  // luma itself is near white
            const int out = matched_chroma(kMiddle + int(chroma), channel, gain, 0, lit, tone);
            ASSERT_NEAR(lit + (out - kMiddle) * reaches[channel], alone, 8) << gain << " " << luma << " " << colour;
          }
        }
      }
    }
  }
}

// Channels take turns; what stands between the rows stays as it is, and every few rows have gains and shares of their own.
TEST(MatchChromaRows, GoFromRowToRow) {
  RandomSource random;
  const Tone tone = make_tone(Transfer::bt709, false, false);
  constexpr int kRows = 11, kCount = 38, kPitch = 41, kBelow = 3000, kStep = 9000;
  std::vector<int16_t> values[4], samples, luma;
  for (int i = 0; i < kCount; ++i) {
    for (int v = 0; v < 4; ++v) {
      values[v].push_back(int16_t(v < 2 ? random.between(kLeastGain, kMostGain) : random.between(-kMostShare, kMostShare)));
    }
  }
  for (int i = 0; i < kRows * kPitch; ++i) {
    samples.push_back(int16_t(random.between(0, kMaxFine)));
    luma.push_back(int16_t(random.between(0, kMaxFine)));
  }
  std::vector<int16_t> expected = samples;
  for (int row = 0; row < kRows; ++row) {
    const double below = (kBelow + row / kSharedRows * kStep) / 32768.0;
    for (std::size_t i = 0; i < kCount; ++i) {
      const auto value = [&](const std::vector<int16_t>& upper, const std::vector<int16_t>& lower) {
        return int(upper[i] + std::floor((lower[i] - upper[i]) * below + 0.5));
      };
      const std::size_t at = std::size_t(row * kPitch) + i;
      expected[at] = int16_t(matched_chroma(samples[at], 1 + int(i % 2), value(values[0], values[1]),
                                            value(values[2], values[3]), luma[at], tone));
    }
  }
  kMatchChromaRows.scalar(samples.data(), {kRows, kPitch},
                          {{{values[0].data(), values[1].data(), kBelow, kStep}, true, true},
                           {values[2].data(), values[3].data(), kBelow, kStep},
                           luma.data(),
                           kPitch,
                           {1, 2}},
                          tone, kCount);
  EXPECT_EQ(samples, expected);
}

TEST(LumaMeans, AreOfTheSamplesThatAChromaSampleStandsFor) {
  const std::vector<uint8_t> bytes = {1, 3, 7, 8, 0, 2, 4, 9, 200, 0};
  int16_t out[4];
  kLumaMeans.scalar({bytes.data(), 5, 2, 2, false, 8, 0}, 1, out, {1, 4}, 2);
  EXPECT_EQ(out[0], (1 + 3 + 2 + 4) * 16);
  EXPECT_EQ(out[1], (7 + 8 + 9 + 200) * 16);
  kLumaMeans.scalar({bytes.data(), 5, 2, 1, false, 8, 0}, 1, out, {1, 4}, 2);
  EXPECT_EQ(out[0], 4 * 32);
  kLumaMeans.scalar({bytes.data(), 5, 1, 1, false, 8, 0}, 1, out, {1, 4}, 4);
  EXPECT_EQ(out[3], 8 * 64);
  kLumaMeans.scalar({bytes.data(), 5, 2, 1, false, 8, 0}, 2, out, {2, 2}, 1);  // once for each of two channels
  EXPECT_EQ(out[0], 4 * 32);
  EXPECT_EQ(out[1], 4 * 32);
  EXPECT_EQ(out[2], 6 * 32);
  EXPECT_EQ(out[3], 6 * 32);
  const std::vector<uint16_t> words = {1023 << 6, 1 << 6};
  kLumaMeans.scalar({reinterpret_cast<const uint8_t*>(words.data()), 4, 1, 1, true, 10, 6}, 1, out, {1, 4}, 2);
  EXPECT_EQ(out[0], 1023 * 16);
  EXPECT_EQ(out[1], 16);
}

}  // namespace
}  // namespace biseam::test
