#include "frame/blend/blend_rows.hpp"

#include <algorithm>
#include <cstring>

#include "base/loop_versions.hpp"
#include "biseam/records.h"
#include "stages/image/row_expansion.hpp"

namespace biseam {

namespace {

// Sixteen bits at every step, so that loops are compiled to lanes of sixteen.
constexpr uint16_t u16(int value) { return static_cast<uint16_t>(value); }

constexpr uint16_t up_on(uint16_t above, uint16_t row, uint16_t below) {
  return expanded_from_sum(sum_on<uint16_t>(above, row, below));
}

constexpr uint16_t up_between(uint16_t row, uint16_t below) { return expanded_from_sum(sum_between<uint16_t>(row, below)); }

// (level1 - up1) * mask + (level2 - up2) * (64 - mask)
constexpr int16_t mixed(uint8_t level1, uint16_t up1, uint8_t level2, uint16_t up2, uint8_t mask) {
  const uint16_t detail1 = u16(level1 - up1), detail2 = u16(level2 - up2);
  const uint16_t difference = u16(detail1 - detail2);
  // The factor as an unsigned number: the product of two 16-bit numbers could leave 31 bits.
  const uint16_t weighted = static_cast<uint16_t>(uint32_t{difference} * mask);
  return static_cast<int16_t>(u16(weighted + u16(detail2 << 6)));
}

static_assert(BISEAM_WEIGHT_ONE == 1 << 6);

constexpr int32_t sum_of(int32_t blended, int16_t detail) {
  return static_cast<int32_t>(static_cast<uint32_t>(blended) + static_cast<uint32_t>(int32_t{detail}));
}

BISEAM_LOOP void narrow_loop(const int32_t* src, uint8_t* out, ptrdiff_t count, uint32_t& largest) noexcept {
  uint32_t most = largest;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    const uint32_t sample = static_cast<uint32_t>(src[i]);
    most = std::max(most, sample);
    out[i] = static_cast<uint8_t>(sample);
  }
  largest = most;
}

BISEAM_LOOP void row_on(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept {
  const auto [r0, r1, r2] = rows.blended;
  const auto [a0, a1, a2] = rows.source1;
  const auto [b0, b1, b2] = rows.source2;
  const uint8_t *level1 = rows.level1, *level2 = rows.level2, *mask = rows.level_mask;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int16_t detail = mixed(level1[i], up_on(a0[i], a1[i], a2[i]), level2[i], up_on(b0[i], b1[i], b2[i]), mask[i]);
    out[i] = sum_of(expanded_from_sum(sum_on(r0[i], r1[i], r2[i])), detail);
  }
}

BISEAM_LOOP void row_between(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept {
  const int32_t *r1 = rows.blended.row, *r2 = rows.blended.below;
  const uint16_t *a1 = rows.source1.row, *a2 = rows.source1.below;
  const uint16_t *b1 = rows.source2.row, *b2 = rows.source2.below;
  const uint8_t *level1 = rows.level1, *level2 = rows.level2, *mask = rows.level_mask;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int16_t detail = mixed(level1[i], up_between(a1[i], a2[i]), level2[i], up_between(b1[i], b2[i]), mask[i]);
    out[i] = sum_of(expanded_from_sum(sum_between(r1[i], r2[i])), detail);
  }
}

BISEAM_LOOP void mix_loop(const uint8_t* a, const uint8_t* b, const uint8_t* mask, int32_t* out, ptrdiff_t count) noexcept {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = a[i] * mask[i] + b[i] * (BISEAM_WEIGHT_ONE - mask[i]);
}

}  // namespace

void mirror_byte_pixels_scalar(const uint8_t* pixel, uint8_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) std::memcpy(out + 3 * i, pixel - 3 * i, 3);
}

constinit const Variants<NarrowRow> kNarrowRow = loop_versions<narrow_loop, NarrowRow>;
constinit const Variants<MirrorBytePixels> kMirrorBytePixels{mirror_byte_pixels_scalar, nullptr,
                                                             BISEAM_ON_X86_64(mirror_byte_pixels_avx2)};
constinit const Variants<CollapseRow> kCollapseRowOn = loop_versions<row_on, CollapseRow>;
constinit const Variants<CollapseRow> kCollapseRowBetween = loop_versions<row_between, CollapseRow>;
constinit const Variants<MixByteRow> kMixByteRow = loop_versions<mix_loop, MixByteRow>;

}  // namespace biseam
