#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// Row kernels of the grid's costs, in their versions.
namespace biseam {

// sums[i] = the squares of a - b at i, i + 1 and i + 2, added up in this order; reads count + 2 samples.  Differences wrap.
using DifferenceRow = void(const int32_t* a, const int32_t* b, float* sums, ptrdiff_t count) noexcept;

// costs[i] = first[i] + second[i] + 1.
using CostRow = void(const float* first, const float* second, float* costs, ptrdiff_t count) noexcept;

extern const Variants<DifferenceRow> kDifferenceRow;
extern const Variants<CostRow> kCostRow;

}  // namespace biseam
