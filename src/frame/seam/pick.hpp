#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "biseam/records.h"

// What resize gives, without its weights.  Those are integers of 1/1024 read as floats, so at most 1024 * 2^-149, and two
// samples lie at most 2^32 apart: what is added to the first sample stays below 2^-106.  That is lost against any sample but 0,
// and from 0 rounds back to 0.  The last column and row, where no next one is read, take the same sample.
namespace biseam {

// The source columns or rows that the first count destination ones take.  Sizes of 1 and more.
void fill_picks(int32_t src_size, int32_t dst_size, int32_t* picks, int32_t count) noexcept;

// Every sample becomes its nearest float.
using RoundRow = void(int32_t* row, ptrdiff_t count) noexcept;
extern const Variants<RoundRow> kRoundRow;

// resize of three interleaved channels, without a heap.  memory: pick_memory_bytes(dst.width) bytes, 16-byte aligned.
int64_t pick_memory_bytes(int32_t dst_width) noexcept;
void pick_image(const BlendImage& src, BlendImage& dst, void* memory) noexcept;

}  // namespace biseam
