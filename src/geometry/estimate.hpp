#pragma once

// About 1 / x and 1 / sqrt(x) to eight bits, the same on every host: the lookup tables hold values of this precision.
#if defined(__arm__) && defined(__ARM_NEON)

#include <arm_neon.h>

namespace biseam {

inline float reciprocal_estimate(float x) noexcept { return vget_lane_f32(vrecpe_f32(vdup_n_f32(x)), 0); }
inline float reciprocal_root_estimate(float x) noexcept { return vget_lane_f32(vrsqrte_f32(vdup_n_f32(x)), 0); }

}  // namespace biseam

#else  // 64-bit ARM too: there the instructions keep denormals and NaN payloads unless the thread's floating-point mode is
       // changed

#include "geometry/estimate_portable.hpp"

namespace biseam {

using portable::reciprocal_estimate;
using portable::reciprocal_root_estimate;

}  // namespace biseam

#endif
