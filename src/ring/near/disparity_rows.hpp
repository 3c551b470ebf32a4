// How well the lenses' rows of strips agree at every disparity.
#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/near/near_shape.hpp"

namespace biseam::ring {

// Gradients of a row of luma (fine): across in [0, width), then along in [width, 2 width), differences over two samples in 1/4
// codes of 8 bits, rounded down; 0 in the outermost columns.
using GradientRow = void(const int16_t* before, const int16_t* here, const int16_t* after, int16_t* gradients,
                         int width) noexcept;

// Over the compared columns and both gradients, for every disparity: apart, the sum of the squares of the lenses' differences,
// and both, the sum of both lenses' squares.  Both below 2^29.
using CompareRow = void(const int16_t* gradients0, const int16_t* gradients1, const NearShape& shape, uint32_t* apart,
                        uint32_t* both) noexcept;

extern constinit const Variants<GradientRow> kGradientRow;
extern constinit const Variants<CompareRow> kCompareRow;

}  // namespace biseam::ring
