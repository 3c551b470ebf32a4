#pragma once

#include <cstddef>
#include <cstdint>

// Row kernels of the reduction.  Samples are 32-bit integers in pixels of three; sums wrap, so that rows and columns may be
// summed in either order.  A result is the sum of 25 samples, rounded.
namespace biseam {

// a + 4 b + 6 c + 4 d + e
constexpr int32_t binomial_sum(int32_t a, int32_t b, int32_t c, int32_t d, int32_t e) noexcept {
  return static_cast<int32_t>(6 * static_cast<uint32_t>(c) + 4 * (static_cast<uint32_t>(b) + static_cast<uint32_t>(d)) +
                              static_cast<uint32_t>(a) + static_cast<uint32_t>(e));
}

// (sum + 128) >> 8, rounding toward minus infinity.
constexpr int32_t reduced_from_sum(int32_t sum) noexcept { return static_cast<int32_t>(static_cast<uint32_t>(sum) + 128) >> 8; }

// row[x] = binomial sum around source pixel 2x, for pixels that have two neighbours on both sides.  Reads source pixels
// -2 .. 2 pixels.
void reduce_pixels(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;

// The same, rounded: of sums of rows.
void reduce_pixels_rounded(const int32_t* src, int32_t* row, ptrdiff_t pixels) noexcept;

// One pixel from five source pixels given by their columns.
void reduce_pixel_at(const int32_t* src, const int32_t columns[5], int32_t* row) noexcept;

// out = binomial sum of five rows, which it does not overlap.
void sum_rows(const int32_t* const rows[5], int32_t* out, ptrdiff_t count) noexcept;

// The same, rounded: of rows of sums.
void reduce_rows(const int32_t* const rows[5], int32_t* out, ptrdiff_t count) noexcept;

}  // namespace biseam
