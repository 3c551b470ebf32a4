#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// The versions behind arithmetic_rows.hpp.
namespace biseam {

using FillRow = void(int32_t* out, int32_t value, ptrdiff_t count) noexcept;
using CombineRow = void(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept;
using MixRow = void(int32_t* a, int32_t* b, const int32_t* mask, int32_t* out, ptrdiff_t count) noexcept;

extern const Variants<FillRow> kFillRow;
extern const Variants<CombineRow> kSubtractRow, kAddRow, kMultiplyRow;
extern const Variants<MixRow> kMixRow;

}  // namespace biseam
