#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "frame/compose/exchange.hpp"

// The versions behind exchange.hpp, row by row.
namespace biseam {

// Rows that are apart.
using SwapRows = void(uint8_t* upper, uint8_t* lower, std::ptrdiff_t bytes) noexcept;
template <class Element>
using ReverseRow = void(Element* row, int width) noexcept;

namespace scalar {
ReverseRow<uint8_t> reverse_bytes;
ReverseRow<PlanePair> reverse_pairs;
}  // namespace scalar

namespace neon {
ReverseRow<uint8_t> reverse_bytes;
ReverseRow<PlanePair> reverse_pairs;
}  // namespace neon

namespace avx2 {
ReverseRow<uint8_t> reverse_bytes;
ReverseRow<PlanePair> reverse_pairs;
}  // namespace avx2

extern const Variants<SwapRows> kSwapRows;
inline constexpr Variants<ReverseRow<uint8_t>> kReverseBytes{scalar::reverse_bytes, BISEAM_ON_ARM(neon::reverse_bytes),
                                                             BISEAM_ON_X86_64(avx2::reverse_bytes)};
inline constexpr Variants<ReverseRow<PlanePair>> kReversePairs{scalar::reverse_pairs, BISEAM_ON_ARM(neon::reverse_pairs),
                                                               BISEAM_ON_X86_64(avx2::reverse_pairs)};

}  // namespace biseam
