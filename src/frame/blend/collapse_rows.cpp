#include "frame/blend/collapse_rows.hpp"

#include "base/loop_versions.hpp"
#include "biseam/records.h"
#include "frame/blend/collapse_kernels.hpp"
#include "stages/image/pyr_up_sums.hpp"

namespace biseam {

namespace {

// up(blended) + (level1 - up1) * mask + (level2 - up2) * (64 - mask)
constexpr int32_t collapsed(int32_t blended, int32_t level1, int32_t up1, int32_t level2, int32_t up2, int32_t mask) {
  const uint32_t weight = static_cast<uint32_t>(mask);
  const uint32_t detail1 = static_cast<uint32_t>(level1) - static_cast<uint32_t>(up1);
  const uint32_t detail2 = static_cast<uint32_t>(level2) - static_cast<uint32_t>(up2);
  return static_cast<int32_t>(static_cast<uint32_t>(blended) + (detail1 * weight + detail2 * (BISEAM_WEIGHT_ONE - weight)));
}

BISEAM_LOOP void row_on(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept {
  const auto [r0, r1, r2] = rows.blended;
  const auto [a0, a1, a2] = rows.source1;
  const auto [b0, b1, b2] = rows.source2;
  const int32_t *level1 = rows.level1, *level2 = rows.level2, *mask = rows.level_mask;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    out[i] =
        collapsed(expanded_from_sum(sum_on(r0[i], r1[i], r2[i])), level1[i], expanded_from_sum(sum_on(a0[i], a1[i], a2[i])),
                  level2[i], expanded_from_sum(sum_on(b0[i], b1[i], b2[i])), mask[i]);
  }
}

BISEAM_LOOP void row_between(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept {
  const int32_t *r1 = rows.blended.row, *r2 = rows.blended.below;
  const int32_t *a1 = rows.source1.row, *a2 = rows.source1.below;
  const int32_t *b1 = rows.source2.row, *b2 = rows.source2.below;
  const int32_t *level1 = rows.level1, *level2 = rows.level2, *mask = rows.level_mask;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    out[i] = collapsed(expanded_from_sum(sum_between(r1[i], r2[i])), level1[i], expanded_from_sum(sum_between(a1[i], a2[i])),
                       level2[i], expanded_from_sum(sum_between(b1[i], b2[i])), mask[i]);
  }
}

}  // namespace

constinit const Variants<CollapseRow> kCollapseRowOn = loop_versions<row_on, CollapseRow>;
constinit const Variants<CollapseRow> kCollapseRowBetween = loop_versions<row_between, CollapseRow>;

void collapse_row_on(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept {
  kCollapseRowOn.best()(rows, out, count);
}

void collapse_row_between(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept {
  kCollapseRowBetween.best()(rows, out, count);
}

}  // namespace biseam
