// How the lenses' light differs round the ring: measured in a frame's strips.
#pragma once

#include <cstdint>

#include "ring/light/tone.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

inline constexpr int kSectors = 16;  // of the ring; strips are multiples of them long

// Lens 1 against lens 0.  Channels are red, green and blue, or what the planes green, blue and red hold; of gray pictures all
// are the same.
struct SectorLight {
  int32_t count;     // samples that count; 0: nothing is known, and the rest is 0
  int32_t logs[3];   // of the factor between codes, see tone.hpp
  int64_t slope_xy;  // sums of the regression of green's logs on b, in strip samples
  int64_t slope_xx;
};

// Both lenses' strips, by channel as frames know them: luma, Cb and Cr, or green, blue and red; null but for the first of gray.
struct StripPair {
  StripShape shape;
  const int16_t* planes[2][3];
};

// Samples count that are neither too dark nor near white in any channel of either lens and have no edge beside them; the logs
// are means round the median, which things that the lenses see elsewhere don't move.  Integers only.
SectorLight measure_sector(const StripPair& strips, const Tone& tone, const LogTable& logs, int sector) noexcept;

}  // namespace biseam::ring
