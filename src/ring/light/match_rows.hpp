// Rows of fine samples in matched light.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "ring/light.hpp"
#include "ring/light/tone.hpp"

namespace biseam::ring {

// Light changes so little from row to row that some share their factors.
struct SharedRows {
  int count;
  ptrdiff_t stride;  // samples
};
inline constexpr int kSharedRows = 4;  // at most

// In place: codes go along the line pivot + f (code - pivot), where it is between black and white.  In the darkest codes f > 1
// stays below the line f^2 through black, and f < 1 above it, so that black stays black.  f > 1 stops at white.  f < 1 leaves
// white as it is, and goes there in the lightest codes by a line three times as steep: what is white in the picture may have
// been anything above.  Products are rounded half up; factors are 3/5 .. 5/3, and greater ones are
// taken for that.
inline constexpr int16_t kMostMatch = kLightOne * 5 / 3;
using MatchLumaRows = void(int16_t* samples, SharedRows rows, const int16_t* factors, const Tone& tone, int count) noexcept;

// What rows of chroma share, of one channel or of two that take turns in samples.  shares, of what luma, fine and as it is
// shown at the same places, is above black; less of them near white, which has no colour.
struct MatchChroma {
  const int16_t *factors[2], *shares[2];
  const int16_t* luma;
  ptrdiff_t luma_stride;  // samples
  int32_t black, white;
};
// In place: middle + f (sample - middle) + share (luma - black), held in 16 bits; products are rounded half up.  count: samples
// of each channel.
using MatchChromaRows = void(int16_t* samples, SharedRows rows, const MatchChroma& shared, int channels, int count) noexcept;

// A row between two rows of nodes, and between their columns: out = the values at count places, of which the first lies start
// half pixels, each other 2^step_bits more, right of the first column; nodes are 2^bits half pixels apart, below counts half
// pixels from the upper row.  Linear, rounded half up.
struct NodeRows {
  const int16_t *upper, *lower;
  int below, bits, start, step_bits;
};
using SpreadNodes = void(const NodeRows& rows, int16_t* out, int count) noexcept;

// Fine luma at the places of chroma samples: means of across x down codes, 1 or 2 each.
struct LumaRows {
  const void* rows[2];  // as many as down
  int across, down;
  bool words;
  int bits, shift;  // of words, see SampleSource
};
using LumaMeans = void(const LumaRows& rows, int16_t* out, int count) noexcept;

extern constinit const Variants<MatchLumaRows> kMatchRows;
extern constinit const Variants<MatchChromaRows> kMatchChromaRows;
extern constinit const Variants<SpreadNodes> kSpreadNodes;
extern constinit const Variants<LumaMeans> kLumaMeans;

}  // namespace biseam::ring
