#pragma once

#include <cstddef>
#include <cstdint>

// Row kernels on 32-bit samples; everything wraps.  Operands may be the same row.
namespace biseam {

void fill_row(int32_t* out, int32_t value, ptrdiff_t count) noexcept;
void subtract_row(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept;
void add_row(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept;
void multiply_row(const int32_t* a, const int32_t* b, int32_t* out, ptrdiff_t count) noexcept;

// a *= mask, b *= 64 - mask, out = a + b.
void mix_row(int32_t* a, int32_t* b, const int32_t* mask, int32_t* out, ptrdiff_t count) noexcept;

}  // namespace biseam
