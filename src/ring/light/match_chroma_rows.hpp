// Rows of fine samples of chroma in matched light.
#pragma once

#include "ring/light/match_rows.hpp"
#include "ring/positions.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

// What rows of chroma share, of one channel or of two that take turns.  shares, of what luma, fine and as it is shown at the
// same places, is above black; less of them near white, which has no colour.
struct MatchChroma {
  MatchGains gains;
  ValueRows shares;
  const int16_t* luma;    // as many as samples
  ptrdiff_t luma_stride;  // samples
  int channels[2];        // of the first sample and the second, 1 for Cb and 2 for Cr
};
inline constexpr int kMostMatched = 512;  // samples in a row of chroma
static_assert(kMostMatched >= kMaxStripWidth && kMostMatched >= 2 * kBlockWidth);
// In place: middle + f (sample - middle) + share (luma - black); products are rounded half up.  Where that would bring blue or
// red near white by f > 1, it does so as luma's rows would.  count: samples of all channels.
using MatchChromaRows = void(int16_t* samples, FineRows rows, const MatchChroma& shared, const Tone& tone, int count) noexcept;

// Fine luma at the places of chroma samples: means of across x down codes, 1 or 2 each.
struct LumaCodes {
  const uint8_t* first;
  ptrdiff_t stride;  // bytes
  int across, down;
  bool words;
  int bits, shift;  // of words, see SampleSource
};
// Each is written as often as there are channels, 1 or 2, side by side.
using LumaMeans = void(const LumaCodes& codes, int channels, int16_t* out, FineRows rows, int count) noexcept;

extern constinit const Variants<MatchChromaRows> kMatchChromaRows;
extern constinit const Variants<LumaMeans> kLumaMeans;

}  // namespace biseam::ring
