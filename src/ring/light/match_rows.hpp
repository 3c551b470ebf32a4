// Rows of fine samples of luma, or of red, green and blue, in matched light.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "ring/light/match_place.hpp"
#include "ring/light/tone.hpp"

namespace biseam::ring {

struct FineRows {
  int count;
  ptrdiff_t stride;  // samples
};

// Light changes so little from row to row that so many share their gains.
inline constexpr int kSharedRows = 4;

// Values of rows between two others: upper + (lower - upper) below / 2^15, below growing by step every kSharedRows rows.
struct ValueRows {
  const int16_t *upper, *lower;
  int below, step;
};

// up, down: whether gains above and below 0 have to be expected.
struct MatchGains {
  ValueRows values;
  bool up, down;
};

// In place: codes go along the line pivot + f (code - pivot), f being gain + 1.  In the darkest codes f > 1 stays below the
// line f^2 through black, and f < 1 above it, so that black stays black.  Near white f > 1 goes on by a line a third as steep
// that ends in white: nothing is clipped.  f < 1 leaves white as it is, and goes there in the lightest codes by a line three
// times as steep as none: what is white in the picture may have been anything above.  Beyond white codes stay as they are, or
// become less by f < 1.  Products are rounded half up.
using MatchLumaRows = void(int16_t* samples, FineRows rows, const MatchGains& gains, const Tone& tone, int count) noexcept;

extern constinit const Variants<MatchLumaRows> kMatchRows;

}  // namespace biseam::ring
