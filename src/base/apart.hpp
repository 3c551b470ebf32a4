#pragma once

#include <cstddef>
#include <cstdint>

namespace biseam {

struct Memory {
  const void* start;
  size_t bytes;
};

// Whether two pieces of memory share no byte.  Kernels that work on blocks are for rows that are apart; where rows overlap, the
// order of the single reads and writes counts, and the definition alone keeps it.
inline bool apart(Memory a, Memory b) noexcept {
  const uintptr_t start_a = reinterpret_cast<uintptr_t>(a.start), start_b = reinterpret_cast<uintptr_t>(b.start);
  return start_a + a.bytes <= start_b || start_b + b.bytes <= start_a;
}

// Whether the first shares no byte with any other.
template <class... Others>
bool apart(Memory first, Memory second, Memory third, Others... others) noexcept {
  return apart(first, second) && apart(first, third, others...);
}

}  // namespace biseam
