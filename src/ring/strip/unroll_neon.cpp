#include "ring/strip/unroll_kernels.hpp"

#if defined(BISEAM_ARM)

#include "base/intrinsics.hpp"

namespace biseam::ring {

namespace {

BISEAM_NEON inline int16_t spline(const int16_t* corner, ptrdiff_t stride, const int16_t* across, const int16_t* down) {
  int32x4_t columns = vmull_n_s16(vld1_s16(corner), down[0]);
  columns = vmlal_n_s16(columns, vld1_s16(corner + stride), down[1]);
  columns = vmlal_n_s16(columns, vld1_s16(corner + 2 * stride), down[2]);
  columns = vmlal_n_s16(columns, vld1_s16(corner + 3 * stride), down[3]);
  const int32x4_t products = vmull_s16(vrshrn_n_s32(columns, kSplineBits), vld1_s16(across));
  const int32x2_t pair = vadd_s32(vget_low_s32(products), vget_high_s32(products));
  return static_cast<int16_t>((vget_lane_s32(pair, 0) + vget_lane_s32(pair, 1) + kSplineOne / 2) >> kSplineBits);
}

}  // namespace

BISEAM_NEON void unroll_neon(const ReducedPlanes& planes, const int32_t* x, const int32_t* y, int16_t* const* out,
                             int count) noexcept {
  for (int i = 0; i < count; ++i) {
    const int32_t at_x = planes.x.index_of(x[i]), at_y = planes.y.index_of(y[i]);
    const int16_t *across = kSplineTable.weights[at_x & 255], *down = kSplineTable.weights[at_y & 255];
    for (int plane = 0; plane < planes.count; ++plane) {
      out[plane][i] = spline(spline_corner(planes, plane, at_x >> 8, at_y >> 8), planes.stride, across, down);
    }
  }
}

}  // namespace biseam::ring

#endif
