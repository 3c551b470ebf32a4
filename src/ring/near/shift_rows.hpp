// Strips as they are when near things are brought together.
#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

// out[i]: between samples[i] and samples[i + 1], fraction / 256 past the first, rounded, halves up.
using MixNeighbours = void(const int16_t* samples, int fraction, int16_t* out, int count) noexcept;
extern constinit const Variants<MixNeighbours> kMixNeighbours;

// Moves a row of a lens's strip in place: sample b becomes what was at b + displacement in lens 0, at b - displacement in lens
// 1, rounded to 1/256.  Where one of the lenses has nothing there, both repeat their last samples that have.  displacement:
// Q16, of less than a third of the width.
void shift_row(int lens, int32_t displacement, int16_t* row, int width) noexcept;

}  // namespace biseam::ring
