#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// Row kernels of a band whose samples are bytes and whose weights are at most 64.
namespace biseam {

// out = the low byte of every sample; largest rises to the largest sample, a negative one counting as more than any other.
using NarrowRow = void(const int32_t* src, uint8_t* out, ptrdiff_t count, uint32_t& largest) noexcept;

// out = count pixels in falling order, from the given one down.  Neither overlaps the other.
using MirrorBytePixels = void(const uint8_t* pixel, uint8_t* out, ptrdiff_t count) noexcept;
MirrorBytePixels mirror_byte_pixels_scalar, mirror_byte_pixels_avx2;

// Three neighbouring rows of an image that is being expanded: a row and those above and below it, of which every one has been
// expanded horizontally, by expand_row or expand_byte_row.
template <class Sample>
struct ExpandedRows {
  const Sample *above, *row, *below;
};

// What a row of the collapsed image is made of.
struct CollapseRows {
  ExpandedRows<int32_t> blended;                // the level below, collapsed; wraps
  ExpandedRows<uint16_t> source1, source2;      // the level below of both Gaussian pyramids
  const uint8_t *level1, *level2, *level_mask;  // this level's row of both and of the weights
};

// out = up(blended) + (level1 - up(source1)) * mask + (level2 - up(source2)) * (64 - mask).  out overlaps nothing that is read.
// But for the blended image no step leaves 16 bits: details lie within 255, their difference by a weight within 2 * 255 * 64,
// and mixed they lie within 255 * 64.
using CollapseRow = void(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept;

// out = a * mask + b * (64 - mask), the top of a pyramid.
using MixByteRow = void(const uint8_t* a, const uint8_t* b, const uint8_t* mask, int32_t* out, ptrdiff_t count) noexcept;

extern const Variants<NarrowRow> kNarrowRow;
extern const Variants<MirrorBytePixels> kMirrorBytePixels;
extern const Variants<CollapseRow> kCollapseRowOn;       // a row on a row of the level below
extern const Variants<CollapseRow> kCollapseRowBetween;  // a row between two, which reads nothing above
extern const Variants<MixByteRow> kMixByteRow;

}  // namespace biseam
