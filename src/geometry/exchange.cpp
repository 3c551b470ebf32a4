#include "geometry/exchange.hpp"

#include <cstddef>
#include <utility>

namespace biseam {

namespace {

template <class Element>
Element* row_start(Element* plane, int stride, int row) noexcept {
  return plane + static_cast<std::ptrdiff_t>(stride) * row;
}

template <class Element>
void swap_rows(Element* upper, Element* lower, int width) noexcept {
  for (int k = 0; k < width; ++k) std::swap(upper[k], lower[k]);
}

template <class Element>
void reverse_row(Element* row, int width) noexcept {
  for (int left = 0, right = width - 1; left < right; ++left, --right) std::swap(row[left], row[right]);
}

template <class Element>
void flip(Element* plane, int width, int stride, int height) noexcept {
  for (int upper = 0, lower = height - 1; upper < lower; ++upper, --lower) {
    swap_rows(row_start(plane, stride, upper), row_start(plane, stride, lower), width);
  }
}

template <class Element>
void mirror(Element* plane, int width, int stride, int height) noexcept {
  for (int row = 0; row < height; ++row) reverse_row(row_start(plane, stride, row), width);
}

}  // namespace

void flip_plane(uint8_t* plane, int width, int stride, int height) noexcept { flip(plane, width, stride, height); }
void flip_plane(ChromaPair* plane, int width, int stride, int height) noexcept { flip(plane, width, stride, height); }
void mirror_plane(uint8_t* plane, int width, int stride, int height) noexcept { mirror(plane, width, stride, height); }
void mirror_plane(ChromaPair* plane, int width, int stride, int height) noexcept { mirror(plane, width, stride, height); }

}  // namespace biseam
