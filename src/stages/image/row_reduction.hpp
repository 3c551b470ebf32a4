#pragma once

#include <algorithm>
#include <cstdint>

// The formulas of the reduction.
namespace biseam {

// a + 4 b + 6 c + 4 d + e, wrapping.
constexpr int32_t binomial_sum(int32_t a, int32_t b, int32_t c, int32_t d, int32_t e) noexcept {
  return static_cast<int32_t>(6 * static_cast<uint32_t>(c) + 4 * (static_cast<uint32_t>(b) + static_cast<uint32_t>(d)) +
                              static_cast<uint32_t>(a) + static_cast<uint32_t>(e));
}

// (sum + 128) >> 8, rounding toward minus infinity.
constexpr int32_t reduced_from_sum(int32_t sum) noexcept { return static_cast<int32_t>(static_cast<uint32_t>(sum) + 128) >> 8; }

// Pixels 1 .. inner_end - 1 of a reduced row have all five source columns inside the row.
constexpr int find_inner_end(int src_width, int dst_width) noexcept { return std::min((src_width - 3) / 2 + 1, dst_width); }

// The source column in the middle of the five that pixel x is summed from.  Past the inner pixels columns follow each other
// one by one: it shows in a column past an exact half only, whose middle is the source's last column.
constexpr int middle_column(int x, int inner_end) noexcept { return x <= inner_end ? 2 * x : x + inner_end; }

}  // namespace biseam
