#pragma once

#include <cstdint>

#include "base/status.hpp"
#include "biseam/records.h"
#include "stages/seam/smooth.hpp"

namespace biseam {

// What a detail is measured against: the mean over so many taps, made with this sigma.
inline constexpr float kDetailSigma = 1.5f;
inline constexpr int kDetailTaps = 11;

// BT.601 luma in 1/256, in wrapping 32-bit arithmetic.
constexpr int32_t gray_of(int32_t red, int32_t green, int32_t blue) noexcept {
  const uint32_t sum =
      76u * static_cast<uint32_t>(red) + 150u * static_cast<uint32_t>(green) + 30u * static_cast<uint32_t>(blue);
  return static_cast<int32_t>(sum) >> 8;
}

// dst = gray_of every pixel.  Writes src's size, samples without gaps.
void to_gray(const BlendImage& src, BlendGray& dst);

// out = |a - b|, wrapping; all three are laid out like a.  mismatch: a channel count is not 1 or the sizes differ.
Status subtract_gray(const BlendGray& a, const BlendGray& b, BlendGray& out);

// dst = |src - mean over 11 x 11 clipped to the image|, same size.  no_memory: dst is left alone.  The mean is rounded in
// single precision: a constant image has no detail at 97 of the 256 gray values, 100 and 128 among them, and ones here and
// there at the others.
Status extract_detail(const BlendGray& src, BlendGray& dst, MemoryReport report = nullptr);

}  // namespace biseam
