#include "frame/compose/exchange.hpp"

#include <cstdlib>

#include "base/loop_versions.hpp"

namespace biseam {

namespace {

BISEAM_LOOP void swap_bytes(uint8_t* __restrict upper, uint8_t* __restrict lower, std::ptrdiff_t bytes) noexcept {
  for (std::ptrdiff_t k = 0; k < bytes; ++k) {
    const uint8_t moved = upper[k];
    upper[k] = lower[k];
    lower[k] = moved;
  }
}

template <class Element>
void flip(const PlaneView<Element>& plane) {
  // Rows that overlap go element by element.
  if (std::abs(int64_t{plane.stride}) < plane.width) return flip_plane(plane);
  SwapRows* const swap = kSwapRows.best();
  const std::ptrdiff_t bytes = plane.width * static_cast<std::ptrdiff_t>(sizeof(Element));
  for (int upper = 0, lower = plane.height - 1; upper < lower; ++upper, --lower) {
    swap(reinterpret_cast<uint8_t*>(plane.row(upper)), reinterpret_cast<uint8_t*>(plane.row(lower)), bytes);
  }
}

template <class Element>
void mirror(const PlaneView<Element>& plane, ReverseRow<Element>* reverse) {
  for (int y = 0; y < plane.height; ++y) reverse(plane.row(y), plane.width);
}

}  // namespace

constinit const Variants<SwapRows> kSwapRows = loop_versions<swap_bytes, SwapRows>;

void reverse_bytes_scalar(uint8_t* row, int width) noexcept { mirror_plane(PlaneView<uint8_t>{row, width, width, 1}); }
void reverse_pairs_scalar(PlanePair* row, int width) noexcept { mirror_plane(PlaneView<PlanePair>{row, width, width, 1}); }

constinit const Variants<ReverseRow<uint8_t>> kReverseBytes{reverse_bytes_scalar, BISEAM_ON_ARM(reverse_bytes_neon),
                                                            BISEAM_ON_X86_64(reverse_bytes_avx2)};
constinit const Variants<ReverseRow<PlanePair>> kReversePairs{reverse_pairs_scalar, BISEAM_ON_ARM(reverse_pairs_neon),
                                                              BISEAM_ON_X86_64(reverse_pairs_avx2)};

void flip_panorama(const ImageHeader& panorama) {
  const MovedPlanes planes = moved_planes(panorama);
  flip(planes.luma);
  flip(planes.chroma);
}

void mirror_panorama(const ImageHeader& panorama) {
  const MovedPlanes planes = moved_planes(panorama);
  mirror(planes.luma, kReverseBytes.best());
  mirror(planes.chroma, kReversePairs.best());
}

}  // namespace biseam
