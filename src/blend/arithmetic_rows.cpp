#include "blend/arithmetic_rows.hpp"

#include "biseam/records.h"

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

}  // namespace

void fill_row(int32_t* out, int32_t value, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = value;
}

void subtract_row(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = difference(a[i], b[i]);
}

void add_row(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = sum(a[i], b[i]);
}

void multiply_row(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = product(a[i], b[i]);
}

void mix_row(int32_t* a, int32_t* b, const int32_t* mask, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int32_t weight = mask[i];
    a[i] = product(a[i], weight);
    b[i] = product(b[i], difference(BISEAM_WEIGHT_ONE, weight));
    out[i] = sum(a[i], b[i]);
  }
}

}  // namespace biseam
