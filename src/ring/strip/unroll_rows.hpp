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

// One reduced plane, or two whose samples lie at the same places.
struct ReducedPlanes {
  ReducedAxis x, y;
  ptrdiff_t stride;  // samples; a plane holds less than 2^31
  int count;
  const int16_t* samples[2];  // with the margins
};

// Strip samples: the cubic B-spline over 4 x 4 reduced samples round each of count places (Q16 luma pixels).  A spline that
// smooths, as it changes least with where between the samples a place falls: two lenses that see the same give the same strip.
// The mean of each of the four columns is rounded, then the mean of the four, halves up.  out: a row for each plane.
using UnrollRow = void(const ReducedPlanes& planes, const int32_t* x, const int32_t* y, int16_t* const* out,
                       int count) noexcept;

extern constinit const Variants<UnrollRow> kUnrollRow;

}  // namespace biseam::ring
