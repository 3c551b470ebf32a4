#pragma once

#include "base/status.hpp"
#include "biseam/records.h"
#include "stages/seam/smooth.hpp"

namespace biseam {

// dst = (76 R + 150 G + 30 B) >> 8 in wrapping 32-bit arithmetic.  Writes src's size, samples without gaps.
void to_gray(const BlendImage& src, BlendGray& dst);

// out = |a - b|, wrapping; all three are laid out like a.  mismatch: a channel count is not 1 or the sizes differ.
Status subtract_gray(const BlendGray& a, const BlendGray& b, BlendGray& out);

// dst = |src - mean over 11 x 11 clipped to the image|, same size.  no_memory: dst is left alone.
Status extract_detail(const BlendGray& src, BlendGray& dst, MemoryReport report = nullptr);

}  // namespace biseam
