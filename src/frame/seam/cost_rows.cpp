#include "frame/seam/cost_rows.hpp"

#include "base/loop_versions.hpp"
#include "stages/seam/grid.hpp"

namespace biseam {

namespace {

BISEAM_LOOP void difference_row(const int32_t* a, const int32_t* b, float* sums, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) {
    sums[i] = end_cost(squared_difference(a[i], b[i]), squared_difference(a[i + 1], b[i + 1]),
                       squared_difference(a[i + 2], b[i + 2]));
  }
}

BISEAM_LOOP void cost_row(const float* first, const float* second, float* costs, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) costs[i] = edge_cost(first[i], second[i]);
}

}  // namespace

constinit const Variants<DifferenceRow> kDifferenceRow = loop_versions<difference_row, DifferenceRow>;
constinit const Variants<CostRow> kCostRow = loop_versions<cost_row, CostRow>;

}  // namespace biseam
