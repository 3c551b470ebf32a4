#include "frame/blend/blend_rows.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"

namespace biseam {

// Five pixels at a time, and a byte of the sixth, which the next store replaces.
BISEAM_AVX2 void mirror_byte_pixels_avx2(const uint8_t* pixel, uint8_t* out, ptrdiff_t count) noexcept {
  const __m128i falling = _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, 0);
  ptrdiff_t i = 0;
  for (; i + 6 <= count; i += 5) {
    const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixel - 3 * i - 13));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 3 * i), _mm_shuffle_epi8(pixels, falling));
  }
  mirror_byte_pixels_scalar(pixel - 3 * i, out + 3 * i, count - i);
}

}  // namespace biseam

#endif
