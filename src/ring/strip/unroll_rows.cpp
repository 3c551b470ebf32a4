#include "ring/strip/unroll_rows.hpp"

#include "base/loop_versions.hpp"

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

BISEAM_LOOP void unroll(const ReducedPlane& plane, const int32_t* x, const int32_t* y, int16_t* out, int count) noexcept {
  constexpr int kColumnShift = kSplineBits - 4, kShift = kSplineBits + 4;
  for (int i = 0; i < count; ++i) {
    const int32_t at_x = plane.x.index_of(x[i]), at_y = plane.y.index_of(y[i]);
    const int16_t *across = kSplineTable.weights[at_x & 255], *down = kSplineTable.weights[at_y & 255];
    // The margins begin kMargin samples before index 0, the spline one before its place.
    const int16_t* corner = plane.samples + ptrdiff_t{(at_y >> 8) + 1} * plane.stride + ((at_x >> 8) + 1);
    int32_t sums[4] = {0, 0, 0, 0};
    for (int row = 0; row < 4; ++row) {
      for (int column = 0; column < 4; ++column) sums[column] += down[row] * corner[row * plane.stride + column];
    }
    int32_t sum = 1 << (kShift - 1);
    for (int column = 0; column < 4; ++column) {
      sum += across[column] * ((sums[column] + (1 << (kColumnShift - 1))) >> kColumnShift);
    }
    out[i] = static_cast<int16_t>(sum >> kShift);
  }
}

}  // namespace

constinit const SplineTable kSplineTable = make_spline_table();
constinit const Variants<UnrollRow> kUnrollRow = loop_versions<unroll, UnrollRow>;

}  // namespace biseam::ring
