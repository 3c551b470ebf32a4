#pragma once

#include <cstddef>
#include <cstdint>

// Row kernels of a band whose samples are bytes and whose weights are at most 64.
namespace biseam {

// out = the low byte of every sample; largest rises to the largest sample, a negative one counting as more than any other.
void narrow_row(const int32_t* src, uint8_t* out, ptrdiff_t count, uint32_t& largest) noexcept;

// out = count pixels in falling order, from the given one down.  Neither overlaps the other.
void mirror_byte_pixels(const uint8_t* pixel, uint8_t* out, ptrdiff_t count) noexcept;

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

// out = up(blended) + (level1 - up(source1)) * mask + (level2 - up(source2)) * (64 - mask) for a row on a row of the level
// below, and for one between two, where nothing above is read.  out overlaps nothing that is read.  But for the blended image
// no step leaves 16 bits: details lie within 255, their difference by a weight within 2 * 255 * 64, and mixed they lie within
// 255 * 64.
void collapse_row_on(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept;
void collapse_row_between(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept;

// out = a * mask + b * (64 - mask), the top of a pyramid.
void mix_byte_row(const uint8_t* a, const uint8_t* b, const uint8_t* mask, int32_t* out, ptrdiff_t count) noexcept;

}  // namespace biseam
