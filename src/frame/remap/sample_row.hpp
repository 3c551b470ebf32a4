#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// Rows of one table, source plane and destination.  Entries are u, v pairs in luma pixels; no position is checked against the
// source's size.  The source is a rectangle: what one entry's column and another one's row name can be read as well.
//
// avx2 and neon read sample by sample and do the arithmetic in vectors.  avx512 makes use of neighbouring entries' naming
// neighbouring samples: it lays a window of a few rows over the picture in which all samples of a vector mostly lie, loads it
// whole and takes the samples out of registers, which costs a fraction of a load for each.  A window ends at the last column
// and row that the vector reads, and is laid only where it begins inside the picture.  Positions farther apart are left to
// avx2.  The two rows of a pair share a window; where they can't, each has its own.
namespace biseam {

// Luma: count entries, count bytes.
using SampleLumaRow = void(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination,
                           int count) noexcept;
SampleLumaRow sample_luma_row_scalar, sample_luma_row_neon, sample_luma_row_avx2, sample_luma_row_avx512;

// Chroma at half the columns: count byte pairs, each from every second entry.  y_factor: 2 at half the rows, else 1; division
// by it is multiplication by 0.5 or 1, for every value.
using SampleChromaRow = void(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float y_factor,
                             uint8_t* destination, int count) noexcept;
SampleChromaRow sample_chroma_row_scalar, sample_chroma_row_neon, sample_chroma_row_avx2, sample_chroma_row_avx512;

struct SampleSource {
  const uint8_t *luma, *chroma;
  std::ptrdiff_t luma_stride, chroma_stride;
};

struct SampleDestination {
  uint8_t *upper, *lower, *chroma;
};

// A row of luma, the one that follows it in the table and the chroma row that comes with the first of them.  Chroma: count / 2
// pairs.
using SampleRowPair = void(const float* upper, const float* lower, const SampleSource& source, float y_factor,
                           const SampleDestination& to, int count) noexcept;

// What a pair of rows is.
template <SampleLumaRow* luma_row, SampleChromaRow* chroma_row>
void sample_rows_one_by_one(const float* upper, const float* lower, const SampleSource& source, float y_factor,
                            const SampleDestination& to, int count) noexcept {
  luma_row(upper, source.luma, source.luma_stride, to.upper, count);
  luma_row(lower, source.luma, source.luma_stride, to.lower, count);
  chroma_row(upper, source.chroma, source.chroma_stride, y_factor, to.chroma, count / 2);
}
SampleRowPair sample_row_pair_avx512;

extern const Variants<SampleLumaRow> kSampleLumaRow;
extern const Variants<SampleChromaRow> kSampleChromaRow;
extern const Variants<SampleRowPair> kSampleRowPair;

// Table rows follow each other in memory, but every page is new to the processor's own prefetching.
inline constexpr int kFloatsAhead = 512;
// One panorama row later about one source row further down is read.
inline constexpr int kRowsAhead = 8;

// Asks for the cache line at an address that need not be the block's own.  Always inline: to the compiler a call of it has no
// effect and can go.
[[gnu::always_inline]] inline void ask_for(const void* block, std::ptrdiff_t offset) noexcept {
  __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(block) + static_cast<uintptr_t>(offset)));
}

}  // namespace biseam
