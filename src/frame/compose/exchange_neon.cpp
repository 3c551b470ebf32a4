#include "frame/compose/exchange.hpp"

#if defined(BISEAM_ARM)

#include "base/intrinsics.hpp"

namespace biseam {

namespace {

BISEAM_NEON inline uint8x16_t reversed(uint8x16_t bytes, const uint8_t*) noexcept {
  const uint8x16_t halves = vrev64q_u8(bytes);
  return vextq_u8(halves, halves, 8);
}

BISEAM_NEON inline uint8x16_t reversed(uint8x16_t bytes, const PlanePair*) noexcept {
  const uint8x16_t halves = vreinterpretq_u8_u16(vrev64q_u16(vreinterpretq_u16_u8(bytes)));
  return vextq_u8(halves, halves, 8);
}

// Both ends of the row change places, a vector each, until less than a vector is left between them.  Both are read before
// either is written, and where they overlap both write the same: any rest of at least one vector takes one step. Returns how
// many elements of either end are done.
template <class Element>
BISEAM_NEON inline int reverse_ends(Element* row, int width) noexcept {
  constexpr int vector = 16 / sizeof(Element);
  int done = 0;
  for (; width - done - done >= vector; done += vector) {
    uint8_t* const left = reinterpret_cast<uint8_t*>(row + done);
    uint8_t* const right = reinterpret_cast<uint8_t*>(row + (width - done - vector));
    const uint8x16_t first = vld1q_u8(left), last = vld1q_u8(right);
    vst1q_u8(left, reversed(last, row));
    vst1q_u8(right, reversed(first, row));
  }
  return done;
}

}  // namespace

BISEAM_NEON void reverse_bytes_neon(uint8_t* row, int width) noexcept {
  const int done = reverse_ends(row, width);
  reverse_bytes_scalar(row + done, width - done - done);
}

BISEAM_NEON void reverse_pairs_neon(PlanePair* row, int width) noexcept {
  const int done = reverse_ends(row, width);
  reverse_pairs_scalar(row + done, width - done - done);
}

}  // namespace biseam

#endif
