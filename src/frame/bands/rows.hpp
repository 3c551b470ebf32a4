#pragma once

#include <cstdint>

namespace biseam {

// Row kernels of the colour conversion: full-range YCbCr.  Chroma is interleaved, U first; RGB is interleaved, R first.
// A pair is two neighbouring pixels that share their chroma.

// Two rows of pixels over one row of chroma.  Sample is int32_t or uint8_t and receives 0..255.  Blocks are written one after
// the other, the upper two pixels first, which settles the result where the two rows overlap.
template <class Sample>
void yuv420_rows_to_rgb(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, Sample* rgb0, Sample* rgb1,
                        int pairs) noexcept;

template <class Sample>
void yuv422_row_to_rgb(const uint8_t* luma, const uint8_t* chroma, Sample* rgb, int pairs) noexcept;

// One pixel.
template <class Sample>
void yuv_to_rgb_pixel(int luma, int u, int v, Sample* rgb) noexcept;

// Integer RGB that is read has 6 fractional bits.
void rgb_row_to_luma(const int32_t* rgb, uint8_t* luma, int count) noexcept;

// The raw samples of a block are summed (wrapping) before the fractional bits are dropped: once per block.
void rgb_rows_to_chroma420(const int32_t* rgb0, const int32_t* rgb1, uint8_t* chroma, int pairs) noexcept;
void rgb_row_to_chroma422(const int32_t* rgb, uint8_t* chroma, int pairs) noexcept;

struct ChromaPair {
  uint8_t u, v;
};
ChromaPair chroma420_of(const int32_t* p00, const int32_t* p10, const int32_t* p01, const int32_t* p11) noexcept;
ChromaPair chroma422_of(const int32_t* p0, const int32_t* p1) noexcept;

}  // namespace biseam
