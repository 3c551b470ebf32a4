#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "frame/remap/sample_row.hpp"

// The versions behind sample_row.hpp.
//
// avx2 and neon read sample by sample and do the arithmetic in vectors.  avx512 makes use of neighbouring entries' naming
// neighbouring samples: it lays a window of a few rows over the picture in which all samples of a vector mostly lie, loads it
// whole and takes the samples out of registers, which costs a fraction of a load for each.  A window ends at the last column
// and row that the vector reads, and is laid only where it begins inside the picture.  Positions farther apart are left to
// avx2.  The two rows of a pair share a window; where they can't, each has its own.
namespace biseam {

using SampleLumaRow = void(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination,
                           int count) noexcept;
using SampleChromaRow = void(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float x_factor, float y_factor,
                             uint8_t* destination, int count) noexcept;

using SampleRowPair = void(const float* upper, const float* lower, const SampleSource& source, float y_factor,
                           const SampleDestination& to, int count) noexcept;

SampleLumaRow sample_luma_row_scalar, sample_luma_row_neon, sample_luma_row_avx2, sample_luma_row_avx512;
SampleChromaRow sample_chroma_row_scalar, sample_chroma_row_neon, sample_chroma_row_avx2, sample_chroma_row_avx512;

// What a pair of rows is.
template <SampleLumaRow* luma_row, SampleChromaRow* chroma_row>
void sample_rows_one_by_one(const float* upper, const float* lower, const SampleSource& source, float y_factor,
                            const SampleDestination& to, int count) noexcept {
  luma_row(upper, source.luma, source.luma_stride, to.upper, count);
  luma_row(lower, source.luma, source.luma_stride, to.lower, count);
  chroma_row(upper, source.chroma, source.chroma_stride, 2.0f, y_factor, to.chroma, count / 2);
}
SampleRowPair sample_row_pair_avx512;

extern const Variants<SampleLumaRow> kSampleLumaRow;
extern const Variants<SampleChromaRow> kSampleChromaRow;
extern const Variants<SampleRowPair> kSampleRowPair;

// Unsigned arithmetic of the host's own width, so that nothing overflows however large the picture is.
inline const uint8_t* locate(const uint8_t* plane, std::ptrdiff_t stride, uint32_t row, std::size_t byte) noexcept {
  return plane + static_cast<std::ptrdiff_t>(std::size_t{row} * static_cast<std::size_t>(stride) + byte);
}

// Table rows follow each other in memory, but every page is new to the processor's own prefetching.
inline constexpr int kFloatsAhead = 512;
// One panorama row later about one source row further down is read.
inline constexpr int kRowsAhead = 8;

// Asks for the cache line at an address that need not be the block's own.  Always inline: to the compiler a call of it has no
// effect and can go.
[[gnu::always_inline]] inline void ask_for(const void* block, std::ptrdiff_t offset) noexcept {
  __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(block) + static_cast<uintptr_t>(offset)));
}

// The factors of the two chroma layouts that the engine has.  Division by them is multiplication by 1 or 0.5, for every value.
inline bool is_engine_chroma(float x_factor, float y_factor) noexcept {
  return x_factor == 2.0f && (y_factor == 2.0f || y_factor == 1.0f);
}

}  // namespace biseam
