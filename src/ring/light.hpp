// What undoes the light that lenses lose: factors of codes above black, from the distance to where the axis meets the picture.
#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "camera/lens.hpp"
#include "ring/format.hpp"

namespace biseam::ring {

// Factors are in 1/kLightOne, from 1/4 to just below 4.
inline constexpr int kLightBits = 13;
inline constexpr int32_t kLightOne = 1 << kLightBits, kMostLight = 4 * kLightOne - 1;

// One lens's, by channel: luma, Cb, Cr or green, blue, red.
struct Light {
  static constexpr int kSteps = 256;

  bool any;  // false: there is nothing to undo, and nothing else holds a value

  // Fine samples that factors leave as they are: black, or the middle of chroma.
  int32_t pivot[3];
  // Shares of luma above black, as it is shown, that are added to chroma: grays come out gray where the gains of red, green and
  // blue differ.
  int32_t tint[3];

  // The axis in the recorded picture's luma, 1/4096 pixel; distances from it are shifted to the right so that the circle's
  // radius stays below 2^15.
  int32_t cx, cy;
  int shift;
  int32_t factors[3][kSteps + 1];  // by the square of such a distance, 2^23 from one to the next
};

// full_range: black is 0, not 16 of 255.
Light make_light(const Lens& lens, const PictureFormat& format, bool full_range) noexcept;

// Factors of a channel at positions in the recorded picture's luma, see mesh.hpp.
using FindLight = void(const Light& light, int channel, const int32_t* x, const int32_t* y, int32_t* factors,
                       int count) noexcept;
// Fine samples, in place: pivot + (sample - pivot) factor, rounded half up and held in 16 bits.
using LightRow = void(int16_t* samples, const int32_t* factors, int32_t pivot, int count) noexcept;
// What a row of chroma takes from luma: fine samples of it at the same places, as many as of chroma, and the light's black and
// share of it, by channel.
struct Tint {
  const int16_t* luma;
  int32_t black, share[2];
};
// In place, rounded half up and held in 16 bits; channels, 1 or 2, take turns in samples: count of each.
using TintRow = void(int16_t* samples, const Tint& tint, int channels, int count) noexcept;

extern constinit const Variants<FindLight> kFindLight;
extern constinit const Variants<LightRow> kLightRow;
extern constinit const Variants<TintRow> kTintRow;

}  // namespace biseam::ring
