#pragma once

#include <cstddef>

namespace biseam {

// Asks for count bytes that will be read soon, into the second cache: the queue of the first is too short for rows.  Worth it
// where a pass reads several large images, more streams than processors follow by themselves.
inline void prefetch(const void* bytes, ptrdiff_t count) noexcept {
  constexpr ptrdiff_t line = 64;
  constexpr int to_read = 0, second_cache = 2;
  for (ptrdiff_t i = 0; i < count; i += line) {
    __builtin_prefetch(static_cast<const char*>(bytes) + i, to_read, second_cache);
  }
  asm volatile("");  // or g++ takes a function that only prefetches for one without effect, and drops its calls
}

}  // namespace biseam
