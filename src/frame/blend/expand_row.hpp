#pragma once

#include <cstddef>
#include <cstdint>

namespace biseam {

// A row of width >= 1 pixels of three 32-bit samples to twice as many pixels of sums, as expand_pixel and expand_outer_pixels
// make them; they wrap.
void expand_row(const int32_t* src, int32_t* row, ptrdiff_t width) noexcept;

}  // namespace biseam
