#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/strip/pyramid.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

// The low band: both lenses' strips mixed in bands along the seam, B, and what that adds to either lens, C_k = B - strip k.  As
// pyramids are linear, C_0 is the pyramid of the difference D = strip 1 - strip 0 under the weights of lens 1, and C_1 = C_0 -
// D: nothing where the lenses agree.

// Levels lie one after the other, finest first.
struct StripPyramid {
  int levels;
  StripShape shapes[kMaxStripLevels];
  int16_t* samples[kMaxStripLevels];
};
// Samples of all levels.
ptrdiff_t pyramid_samples(StripShape shape) noexcept;
StripPyramid lay_out_pyramid(StripShape shape, int16_t* samples) noexcept;

// Weights of lens 1 on every level: kWeightOne above the path (rows, Q16), half of it on the path, 0 below.
void build_seam_weights(const int32_t* path, const StripPyramid& weights) noexcept;

// Laplacian pyramid of a difference of strips; its top is the reduced difference.
void build_difference_pyramid(const int16_t* difference, const StripPyramid& pyramid) noexcept;

// Corrections of both lenses, within +-kMaxCorrection: faded by fade, the window across.  What the pyramid holds is used up.
inline constexpr int kMaxCorrection = (1 << kFineBits) - 1;
void mix_low_band(const StripPyramid& pyramid, const StripPyramid& weights, const int16_t* difference, const int16_t* fade,
                  int16_t* correction0, int16_t* correction1) noexcept;

// The window across: width factors in 1/kFadeOne.  0 at the ring's two outermost samples, kFadeOne from margin samples on,
// between them 3 u^2 - 2 u^3, rounded.
inline constexpr int kFadeBits = 14;
inline constexpr int kFadeOne = 1 << kFadeBits;
void make_fade(int width, int margin, int16_t* fade) noexcept;

// One row of both corrections from the mixed difference.
using CorrectRow = void(const int16_t* mixed, const int16_t* difference, const int16_t* fade, int16_t* correction0,
                        int16_t* correction1, int width) noexcept;
extern constinit const Variants<CorrectRow> kCorrectRow;

}  // namespace biseam::ring
