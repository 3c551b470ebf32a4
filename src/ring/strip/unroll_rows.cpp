#include "ring/strip/unroll_rows.hpp"

#include "ring/strip/unroll_kernels.hpp"

namespace biseam::ring {

namespace {

constexpr SplineTable make_spline_table() {
  SplineTable table{};
  for (int64_t u = 0; u < 256; ++u) {
    const int64_t v = 256 - u, one = int64_t{6} << 24;
    const auto weight = [=](int64_t sixths) { return static_cast<int16_t>((sixths * kSplineOne + one / 2) / one); };
    int16_t* w = table.weights[u];
    w[0] = weight(v * v * v);
    w[1] = weight(3 * u * u * u - 6 * 256 * u * u + (int64_t{4} << 24));
    w[2] = weight(3 * v * v * v - 6 * 256 * v * v + (int64_t{4} << 24));
    w[3] = weight(u * u * u);
    // What rounding left over goes where it weighs least.
    w[u < 128 ? 1 : 2] = static_cast<int16_t>(w[u < 128 ? 1 : 2] + kSplineOne - w[0] - w[1] - w[2] - w[3]);
  }
  return table;
}

constexpr int32_t rounded(int32_t sum) { return (sum + kSplineOne / 2) >> kSplineBits; }

void unroll(const ReducedPlanes& planes, const int32_t* x, const int32_t* y, int16_t* const* out, int count) noexcept {
  for (int i = 0; i < count; ++i) {
    const int32_t at_x = planes.x.index_of(x[i]), at_y = planes.y.index_of(y[i]);
    const int16_t *across = kSplineTable.weights[at_x & 255], *down = kSplineTable.weights[at_y & 255];
    for (int plane = 0; plane < planes.count; ++plane) {
      const int16_t* corner = spline_corner(planes, plane, at_x >> 8, at_y >> 8);
      int32_t sum = 0;
      for (int column = 0; column < 4; ++column) {
        int32_t column_sum = 0;
        for (int row = 0; row < 4; ++row) column_sum += down[row] * corner[row * planes.stride + column];
        sum += across[column] * rounded(column_sum);
      }
      out[plane][i] = static_cast<int16_t>(rounded(sum));
    }
  }
}

}  // namespace

constinit const SplineTable kSplineTable = make_spline_table();
constinit const Variants<UnrollRow> kUnrollRow{unroll, BISEAM_ON_ARM(unroll_neon), BISEAM_ON_X86_64(unroll_avx2)};

}  // namespace biseam::ring
