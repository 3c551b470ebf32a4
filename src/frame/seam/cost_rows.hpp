#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"

// Row kernels of the grid's costs, in their versions.
namespace biseam {

// sums[i] = end_cost of the squared differences at i, i + 1 and i + 2; reads count + 2 samples.
using DifferenceRow = void(const int32_t* a, const int32_t* b, float* sums, ptrdiff_t count) noexcept;

// costs[i] = edge_cost of both ends.
using CostRow = void(const float* first, const float* second, float* costs, ptrdiff_t count) noexcept;

extern const Variants<DifferenceRow> kDifferenceRow;
extern const Variants<CostRow> kCostRow;

}  // namespace biseam
