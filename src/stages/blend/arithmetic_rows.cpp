#include "stages/blend/arithmetic_rows.hpp"

#include "base/loop_versions.hpp"
#include "biseam/records.h"
#include "stages/blend/arithmetic_kernels.hpp"

namespace biseam {

namespace {

constexpr int32_t sum(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
constexpr int32_t difference(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
constexpr int32_t product(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// The definitions.  Compilers turn these loops into as good vector code as could be written by hand, so every version is the
// same loop.
BISEAM_LOOP void fill(int32_t* out, int32_t value, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = value;
}

BISEAM_LOOP void subtract(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = difference(a[i], b[i]);
}

BISEAM_LOOP void add(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = sum(a[i], b[i]);
}

BISEAM_LOOP void multiply(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = product(a[i], b[i]);
}

BISEAM_LOOP void mix(int32_t* a, int32_t* b, const int32_t* mask, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int32_t weight = mask[i];
    a[i] = product(a[i], weight);
    b[i] = product(b[i], difference(BISEAM_WEIGHT_ONE, weight));
    out[i] = sum(a[i], b[i]);
  }
}

}  // namespace

constinit const Variants<FillRow> kFillRow = loop_versions<fill, FillRow>;
constinit const Variants<CombineRow> kSubtractRow = loop_versions<subtract, CombineRow>;
constinit const Variants<CombineRow> kAddRow = loop_versions<add, CombineRow>;
constinit const Variants<CombineRow> kMultiplyRow = loop_versions<multiply, CombineRow>;
constinit const Variants<MixRow> kMixRow = loop_versions<mix, MixRow>;

void fill_row(int32_t* out, int32_t value, ptrdiff_t count) noexcept { kFillRow.best()(out, value, count); }

void subtract_row(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept {
  kSubtractRow.best()(a, b, out, count);
}

void add_row(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept { kAddRow.best()(a, b, out, count); }

void multiply_row(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept {
  kMultiplyRow.best()(a, b, out, count);
}

void mix_row(int32_t* a, int32_t* b, const int32_t* mask, int32_t* out, ptrdiff_t count) noexcept {
  kMixRow.best()(a, b, mask, out, count);
}

}  // namespace biseam
