// What a lens's light is multiplied by at a place of the ring or beside it.
#pragma once

#include <cstdint>

namespace biseam::ring {

// Gains are what factors are above 1; they and shares are in 1/kMatchOne.
inline constexpr int kMatchBits = 14, kMatchOne = 1 << kMatchBits;
inline constexpr int kLeastGain = -kMatchOne * 2 / 5, kMostGain = kMatchOne * 2 / 3, kMostShare = kMatchOne / 2;

// Gains of the planes' channels about the tone's pivot, or about the middle of chroma, and the share of luma that is added to
// chroma.
enum MatchValue { first_gain, second_gain, third_gain, first_tint, second_tint, kMatchValues };

struct MatchPlace {
  static constexpr int kLanes = 8;
  int16_t values[kLanes];  // kMatchValues, then zeros
};

}  // namespace biseam::ring
