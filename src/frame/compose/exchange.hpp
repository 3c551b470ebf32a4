#pragma once

#include <cstdint>

namespace biseam {

// An interleaved chroma pair, moved as one unit.  No alignment is asked of chroma planes.
struct PlanePair {
  uint8_t first, second;
};

// In place: row i with row height - 1 - i, element k of every row with element width - 1 - k.  Width and stride in elements.
void flip_plane(uint8_t* plane, int width, int stride, int height) noexcept;
void flip_plane(PlanePair* plane, int width, int stride, int height) noexcept;
void mirror_plane(uint8_t* plane, int width, int stride, int height) noexcept;
void mirror_plane(PlanePair* plane, int width, int stride, int height) noexcept;

}  // namespace biseam
