#pragma once

#include <cstdint>

namespace biseam {

// Border rule of border_index that mirrors coordinates without repeating the edge: -1 -> 1, len -> len - 2.
inline constexpr int kReflect101 = 4;

// Writes p where it lies in [0, len) or the rule is not kReflect101, else its mirror image.  Nothing is written when len < 2
// leaves no mirror image.
void border_index(int32_t& index, int64_t p, int len, int rule);

// The row or column that stands for coordinate p of a dimension of len > 0 samples; 0 when there is but one.
inline int reflected(int64_t p, int len) {
  if (p >= 0 && p < len) return static_cast<int>(p);
  int32_t index = 0;
  border_index(index, p, len, kReflect101);
  return index;
}

}  // namespace biseam
