#include "imgproc/pyr_up_rows.hpp"

namespace biseam {

namespace {

constexpr uint32_t on(int32_t before, int32_t middle, int32_t after) {
  return static_cast<uint32_t>(before) + 6 * static_cast<uint32_t>(middle) + static_cast<uint32_t>(after);
}

constexpr uint32_t between(int32_t middle, int32_t after) {
  return 4 * (static_cast<uint32_t>(middle) + static_cast<uint32_t>(after));
}

constexpr int32_t rounded(uint32_t sum) { return static_cast<int32_t>(sum + 32) >> 6; }

}  // namespace

void expand_row(const int32_t* src, int32_t* row, ptrdiff_t width, int channels) noexcept {
  for (ptrdiff_t i = 0; i < width; ++i) {
    const int32_t* middle = src + i * channels;
    const int32_t* after = i + 1 < width ? middle + channels : middle;
    const int32_t* before = i > 0 ? middle - channels : after;
    int32_t* out = row + 2 * i * channels;
    for (int k = 0; k < channels; ++k) {
      out[k] = static_cast<int32_t>(on(before[k], middle[k], after[k]));
      out[k + channels] = static_cast<int32_t>(between(middle[k], after[k]));
    }
  }
}

void expand_rows_on(const int32_t* above, const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = rounded(on(above[i], row[i], below[i]));
}

void expand_rows_between(const int32_t* row, const int32_t* below, int32_t* out, ptrdiff_t count) noexcept {
  for (ptrdiff_t i = 0; i < count; ++i) out[i] = rounded(between(row[i], below[i]));
}

}  // namespace biseam
