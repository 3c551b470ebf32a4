#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "frame/blend/blend_rows.hpp"

// The versions behind blend_rows.hpp.
namespace biseam {

using NarrowRow = void(const int32_t* src, uint8_t* out, ptrdiff_t count, uint32_t& largest) noexcept;
using MirrorBytePixels = void(const uint8_t* pixel, uint8_t* out, ptrdiff_t count) noexcept;
using CollapseRow = void(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept;
using MixByteRow = void(const uint8_t* a, const uint8_t* b, const uint8_t* mask, int32_t* out, ptrdiff_t count) noexcept;

void mirror_byte_pixels_avx2(const uint8_t* pixel, uint8_t* out, ptrdiff_t count) noexcept;

extern const Variants<NarrowRow> kNarrowRow;
extern const Variants<MirrorBytePixels> kMirrorBytePixels;
extern const Variants<CollapseRow> kCollapseRowOn, kCollapseRowBetween;
extern const Variants<MixByteRow> kMixByteRow;

}  // namespace biseam
