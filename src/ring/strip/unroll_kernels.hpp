#pragma once

#include "ring/strip/unroll_rows.hpp"

namespace biseam::ring {

// The first of the 4 x 4 samples of a spline between indices (x, y) and (x + 1, y + 1): the margins begin kMargin before index
// 0, the spline one before its place.
inline const int16_t* spline_corner(const ReducedPlanes& planes, int plane, int x, int y) noexcept {
  constexpr int kFirst = ReducedAxis::kMargin - 1;
  return planes.samples[plane] + ptrdiff_t{y + kFirst} * planes.stride + (x + kFirst);
}

#if defined(BISEAM_X86_64)
BISEAM_AVX2 void unroll_avx2(const ReducedPlanes& planes, const int32_t* x, const int32_t* y, int16_t* const* out,
                             int count) noexcept;
#elif defined(BISEAM_ARM)
BISEAM_NEON void unroll_neon(const ReducedPlanes& planes, const int32_t* x, const int32_t* y, int16_t* const* out,
                             int count) noexcept;
#endif

}  // namespace biseam::ring
