#include "frame/compose/exchange.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"

namespace biseam {

namespace {

// order: where the bytes of half a vector come from.
BISEAM_AVX2 inline __m256i reversed(__m256i bytes, __m128i order) noexcept {
  const __m256i halves = _mm256_shuffle_epi8(bytes, _mm256_broadcastsi128_si256(order));
  return _mm256_permute2x128_si256(halves, halves, 1);
}

// Both ends of the row change places, a vector each, until less than a vector is left between them.  Both are read before
// either is written, and where they overlap both write the same: any rest of at least one vector takes one step. Returns how
// many bytes of either end are done.
BISEAM_AVX2 inline ptrdiff_t reverse_ends(uint8_t* row, ptrdiff_t bytes, __m128i order) noexcept {
  constexpr ptrdiff_t vector = sizeof(__m256i);
  ptrdiff_t done = 0;
  for (; bytes - 2 * done >= vector; done += vector) {
    __m256i* const left = reinterpret_cast<__m256i*>(row + done);
    __m256i* const right = reinterpret_cast<__m256i*>(row + bytes - done - vector);
    const __m256i first = _mm256_loadu_si256(left), last = _mm256_loadu_si256(right);
    _mm256_storeu_si256(left, reversed(last, order));
    _mm256_storeu_si256(right, reversed(first, order));
  }
  return done;
}

}  // namespace

BISEAM_AVX2 void reverse_bytes_avx2(uint8_t* row, int width) noexcept {
  const __m128i order = _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
  const ptrdiff_t done = reverse_ends(row, width, order);
  reverse_bytes_scalar(row + done, static_cast<int>(width - 2 * done));
}

BISEAM_AVX2 void reverse_pairs_avx2(PlanePair* row, int width) noexcept {
  const __m128i order = _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
  const ptrdiff_t done = reverse_ends(reinterpret_cast<uint8_t*>(row), ptrdiff_t{2} * width, order) / 2;
  reverse_pairs_scalar(row + done, static_cast<int>(width - 2 * done));
}

}  // namespace biseam

#endif
