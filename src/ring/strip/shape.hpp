#pragma once

#include <cstddef>

#include "ring/fine.hpp"

namespace biseam::ring {

// The unrolled ring: length samples round the lenses' axis (t, circular) and width samples across (b, towards lens 1), stored
// row by row, a row holding the width samples of one t.  Sample (t, b) stands for the angles 2 pi t / length and (b - (width -
// 1) / 2) 2 pi / length: as far apart across as round.
struct StripShape {
  int length;  // a multiple of 16 in [16, kMaxStripLength]
  int width;   // in [kMinStripWidth, kMaxStripWidth]
};

inline constexpr int kMaxStripLength = 4096;
inline constexpr int kMinStripWidth = 5;
inline constexpr int kMaxStripWidth = 512;

// Samples of strips and corrections are fine.  Strips lie in [0, kMaxFine], their differences within +-kMaxFine.
inline constexpr int kMaxFine = 4095 << 2;
static_assert(kMaxFine >= 255 << 6 && kMaxFine >= 1023 << 4);

// Levels of a pyramid over strips, at most.
inline constexpr int kMaxStripLevels = 9;

// A quarter of the panorama's width, rounded to a multiple of 16.
int strip_length(int panorama_width) noexcept;

inline ptrdiff_t strip_samples(StripShape shape) noexcept { return ptrdiff_t{shape.length} * shape.width; }

// The next level of a pyramid: half as long, half as wide (rounded up).
inline StripShape reduced(StripShape shape) noexcept { return {shape.length / 2, (shape.width + 1) / 2}; }

// How many levels a pyramid has: they are halved while the length is even and above 4 and the width is above 4.
int strip_levels(StripShape shape) noexcept;

}  // namespace biseam::ring
