#pragma once

#include <cstddef>
#include <cstdint>

namespace biseam {

// Asks for rows of bytes that will be wanted soon: where rows lie far apart processors don't foresee it.  Nothing is read.
// stride: bytes from a row to the next, of any sign.  written: whether they will be written.  Inlined, as calls of functions
// that only prefetch count as calls without an effect, which compilers leave out.
template <bool written>
[[gnu::always_inline]] inline void prefetch_rows(const void* first, std::ptrdiff_t stride, int rows,
                                                 std::ptrdiff_t bytes) noexcept {
  constexpr std::uintptr_t kLine = 64;
  for (int row = 0; row < rows; ++row) {
    const auto begin = reinterpret_cast<std::uintptr_t>(first) + static_cast<std::uintptr_t>(row * stride);
    const std::uintptr_t end = begin + static_cast<std::uintptr_t>(bytes);
    for (std::uintptr_t line = begin & ~(kLine - 1); line < end; line += kLine) {
      __builtin_prefetch(reinterpret_cast<const void*>(line), written);
    }
  }
}

}  // namespace biseam
