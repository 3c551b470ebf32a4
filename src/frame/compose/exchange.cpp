#include "frame/compose/exchange.hpp"

#include <cstddef>
#include <utility>

#include "base/apart.hpp"
#include "base/loop_versions.hpp"
#include "frame/compose/exchange_kernels.hpp"

namespace biseam {

namespace {

template <class Element>
Element* row_start(Element* plane, int stride, int row) noexcept {
  return plane + static_cast<std::ptrdiff_t>(stride) * row;
}

// Element by element, which settles the result where rows overlap.
template <class Element>
void swap_elements(Element* upper, Element* lower, int width) noexcept {
  for (int k = 0; k < width; ++k) std::swap(upper[k], lower[k]);
}

BISEAM_LOOP void swap_apart(uint8_t* __restrict upper, uint8_t* __restrict lower, std::ptrdiff_t bytes) noexcept {
  for (std::ptrdiff_t k = 0; k < bytes; ++k) {
    const uint8_t moved = upper[k];
    upper[k] = lower[k];
    lower[k] = moved;
  }
}

template <class Element>
void reverse_elements(Element* row, int width) noexcept {
  for (int left = 0, right = width - 1; left < right; ++left, --right) std::swap(row[left], row[right]);
}

template <class Element>
void swap_rows(Element* upper, Element* lower, int width) noexcept {
  if (width < 1) return;
  const std::size_t bytes = static_cast<std::size_t>(width) * sizeof(Element);
  if (!apart({upper, bytes}, {lower, bytes})) return swap_elements(upper, lower, width);
  kSwapRows.best()(reinterpret_cast<uint8_t*>(upper), reinterpret_cast<uint8_t*>(lower), static_cast<std::ptrdiff_t>(bytes));
}

template <class Element>
void flip(Element* plane, int width, int stride, int height) noexcept {
  for (int upper = 0, lower = height - 1; upper < lower; ++upper, --lower) {
    swap_rows(row_start(plane, stride, upper), row_start(plane, stride, lower), width);
  }
}

template <class Element>
void mirror(ReverseRow<Element>* reverse, Element* plane, int width, int stride, int height) noexcept {
  for (int row = 0; row < height; ++row) reverse(row_start(plane, stride, row), width);
}

}  // namespace

constinit const Variants<SwapRows> kSwapRows = loop_versions<swap_apart, SwapRows>;

void reverse_bytes_scalar(uint8_t* row, int width) noexcept { reverse_elements(row, width); }
void reverse_pairs_scalar(PlanePair* row, int width) noexcept { reverse_elements(row, width); }

void flip_plane(uint8_t* plane, int width, int stride, int height) noexcept { flip(plane, width, stride, height); }
void flip_plane(PlanePair* plane, int width, int stride, int height) noexcept { flip(plane, width, stride, height); }

void mirror_plane(uint8_t* plane, int width, int stride, int height) noexcept {
  mirror(kReverseBytes.best(), plane, width, stride, height);
}

void mirror_plane(PlanePair* plane, int width, int stride, int height) noexcept {
  mirror(kReversePairs.best(), plane, width, stride, height);
}

}  // namespace biseam
