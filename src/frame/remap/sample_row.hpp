#pragma once

#include <cstddef>
#include <cstdint>

namespace biseam {

// Rows of one table, source plane and destination.  Entries are u, v pairs in luma pixels; no position is checked against the
// source's size.  The source is a rectangle: what one entry's column and another one's row name can be read as well.

// Luma: count entries, count bytes.  Mixes a pixel with the one below; the horizontal neighbour is not read.
void sample_luma_row(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination,
                     int count) noexcept;

// Chroma: count byte pairs, each from every second entry, divided by the chroma factors.  Bilinear.
void sample_chroma_row(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float x_factor, float y_factor,
                       uint8_t* destination, int count) noexcept;

struct SampleSource {
  const uint8_t *luma, *chroma;
  std::ptrdiff_t luma_stride, chroma_stride;
};

struct SampleDestination {
  uint8_t *upper, *lower, *chroma;
};

// A row of luma, the one that follows it in the table and the chroma row that comes with the first of them, at half the
// columns. Chroma: count / 2 pairs.
void sample_row_pair(const float* upper, const float* lower, const SampleSource& source, float y_factor,
                     const SampleDestination& to, int count) noexcept;

}  // namespace biseam
