#include "base/loop_versions.hpp"
#include "frame/seam/cost_kernels.hpp"

namespace biseam {

namespace {

BISEAM_LOOP float squared_difference(int32_t a, int32_t b) noexcept {
  const float d = static_cast<float>(static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b)));
  return d * d;
}

BISEAM_LOOP void difference_row(const int32_t* a, const int32_t* b, float* sums, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) {
    sums[i] = squared_difference(a[i], b[i]) + squared_difference(a[i + 1], b[i + 1]) + squared_difference(a[i + 2], b[i + 2]);
  }
}

BISEAM_LOOP void cost_row(const float* first, const float* second, float* costs, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) costs[i] = first[i] + second[i] + 1.0f;
}

}  // namespace

constinit const Variants<DifferenceRow> kDifferenceRow = loop_versions<difference_row, DifferenceRow>;
constinit const Variants<CostRow> kCostRow = loop_versions<cost_row, CostRow>;

}  // namespace biseam
