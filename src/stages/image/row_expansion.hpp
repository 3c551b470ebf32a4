#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "stages/image/border.hpp"

// The formulas of the expansion.  Sums are unsigned numbers that wrap: of 32 bits, or of 16, which hold all sums of bytes.
namespace biseam {

// On a source sample, in one direction.
template <class Sum = uint32_t, class Sample>
constexpr Sum sum_on(Sample before, Sample middle, Sample after) noexcept {
  return static_cast<Sum>(static_cast<Sum>(before) + static_cast<Sum>(after) + static_cast<Sum>(6 * static_cast<Sum>(middle)));
}

// Between two.
template <class Sum = uint32_t, class Sample>
constexpr Sum sum_between(Sample middle, Sample after) noexcept {
  return static_cast<Sum>(4 * static_cast<Sum>(static_cast<Sum>(middle) + static_cast<Sum>(after)));
}

// (sum + 32) >> 6, of 32 bits rounding toward minus infinity.
constexpr int32_t expanded_from_sum(uint32_t sum) noexcept { return static_cast<int32_t>(sum + 32) >> 6; }
constexpr uint16_t expanded_from_sum(uint16_t sum) noexcept {
  return static_cast<uint16_t>(static_cast<uint16_t>(sum + 32) >> 6);
}

// A source pixel to two pixels of sums, the one on it and the one after it.
template <class Sample, class Result>
constexpr void expand_pixel(const Sample* before, const Sample* middle, const Sample* after, Result* out,
                            int channels) noexcept {
  using Sum = std::make_unsigned_t<Result>;
  for (int k = 0; k < channels; ++k) {
    out[k] = static_cast<Result>(sum_on<Sum>(before[k], middle[k], after[k]));
    out[k + channels] = static_cast<Result>(sum_between<Sum>(middle[k], after[k]));
  }
}

// The first and the last of a row of width >= 1 pixels.  Pixel -1 counts as pixel 1 but pixel width as pixel width - 1, on
// purpose; a lone pixel gives 8 times itself twice.
template <class Sample, class Result>
constexpr void expand_outer_pixels(const Sample* src, Result* row, ptrdiff_t width, int channels) noexcept {
  const Sample* const second = width > 1 ? src + channels : src;
  expand_pixel(second, src, second, row, channels);
  if (width < 2) return;
  const Sample* const last = src + (width - 1) * channels;
  expand_pixel(last - channels, last, last, row + 2 * (width - 1) * channels, channels);
}

// The source row that stands for row y of an expansion, one outside at most.  Mirroring takes place on the destination's rows.
inline int expanded_source_row(int64_t y, int src_height, int dst_height) {
  return std::min(reflected(2 * y, dst_height) / 2, src_height - 1);
}

}  // namespace biseam
