#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "stages/lens/flip.hpp"

namespace biseam {

// A panorama upside down, and left to right, in place: flip_plane and mirror_plane of its planes.
void flip_panorama(const ImageHeader& panorama);
void mirror_panorama(const ImageHeader& panorama);

// Two rows that are apart change places.
using SwapRows = void(uint8_t* upper, uint8_t* lower, std::ptrdiff_t bytes) noexcept;
extern const Variants<SwapRows> kSwapRows;

// Element k with element width - 1 - k.
template <class Element>
using ReverseRow = void(Element* row, int width) noexcept;
ReverseRow<uint8_t> reverse_bytes_scalar, reverse_bytes_neon, reverse_bytes_avx2;
ReverseRow<PlanePair> reverse_pairs_scalar, reverse_pairs_neon, reverse_pairs_avx2;

extern const Variants<ReverseRow<uint8_t>> kReverseBytes;
extern const Variants<ReverseRow<PlanePair>> kReversePairs;

}  // namespace biseam
