#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/strip/reduction.hpp"

namespace biseam::ring {

// Weights of a cubic B-spline's four samples at 256 places between the middle two; each four add up to kSplineOne.
inline constexpr int kSplineBits = 12;
inline constexpr int kSplineOne = 1 << kSplineBits;
struct SplineTable {
  int16_t weights[256][4];
};
extern const SplineTable kSplineTable;

// A reduced plane.
struct ReducedPlane {
  ReducedAxis x, y;
  ptrdiff_t stride;        // samples
  const int16_t* samples;  // with the margins
};

// Strip samples: the cubic B-spline over 4 x 4 reduced samples round each of count places (Q16 luma pixels).  A spline that
// smooths, as it changes least with where between the samples a place falls: two lenses that see the same give the same strip.
// The mean of each of the four columns is rounded, then the mean of the four, halves up.
using UnrollRow = void(const ReducedPlane& plane, const int32_t* x, const int32_t* y, int16_t* out, int count) noexcept;

extern constinit const Variants<UnrollRow> kUnrollRow;

}  // namespace biseam::ring
