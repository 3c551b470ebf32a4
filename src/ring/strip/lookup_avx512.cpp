#include "ring/strip/lookup_kernels.hpp"

#if defined(BISEAM_X86_64)

#include "base/intrinsics.hpp"

namespace biseam::ring {

BISEAM_AVX512 void look_up_corrections_avx512(const int16_t* corrections, StripShape shape, const int32_t* t, const int32_t* b,
                                              int16_t* out, int count) noexcept {
  const __m512i zero = _mm512_setzero_si512(), turn = _mm512_set1_epi32(shape.length << 16);
  const __m512i last = _mm512_set1_epi32((shape.width - 1) << 16), length = _mm512_set1_epi32(shape.length);
  const __m512i width = _mm512_set1_epi32(shape.width), last_pair = _mm512_set1_epi32(shape.width - 2);
  const __m512i whole = _mm512_set1_epi32(256);
  for (int i = 0; i < count; i += 16) {
    const __mmask16 lanes = static_cast<__mmask16>(count - i >= 16 ? 0xffff : (1 << (count - i)) - 1);
    __m512i at_t = _mm512_maskz_loadu_epi32(lanes, t + i), at_b = _mm512_maskz_loadu_epi32(lanes, b + i);
    at_t = _mm512_mask_add_epi32(at_t, _mm512_cmplt_epi32_mask(at_t, zero), at_t, turn);
    at_t = _mm512_mask_sub_epi32(at_t, _mm512_cmpge_epi32_mask(at_t, turn), at_t, turn);
    at_b = _mm512_min_epi32(_mm512_max_epi32(at_b, zero), last);
    const __m512i row = _mm512_srai_epi32(at_t, 16);
    __m512i next = _mm512_add_epi32(row, _mm512_set1_epi32(1));
    next = _mm512_maskz_mov_epi32(_mm512_cmplt_epi32_mask(next, length), next);
    const __m512i column = _mm512_min_epi32(_mm512_srai_epi32(at_b, 16), last_pair);
    const __m512i along = _mm512_and_si512(_mm512_srli_epi32(at_t, 8), _mm512_set1_epi32(255));
    const __m512i across = _mm512_srai_epi32(_mm512_sub_epi32(at_b, _mm512_slli_epi32(column, 16)), 8);
    const __m512i pair_weights = _mm512_or_si512(_mm512_sub_epi32(whole, across), _mm512_slli_epi32(across, 16));
    const __m512i here_index = _mm512_add_epi32(_mm512_mullo_epi32(row, width), column);
    const __m512i after_index = _mm512_add_epi32(_mm512_mullo_epi32(next, width), column);
    const __m512i here = _mm512_mask_i32gather_epi32(zero, lanes, here_index, corrections, 2);
    const __m512i after = _mm512_mask_i32gather_epi32(zero, lanes, after_index, corrections, 2);
    const __m512i near = _mm512_mullo_epi32(_mm512_madd_epi16(here, pair_weights), _mm512_sub_epi32(whole, along));
    const __m512i far = _mm512_mullo_epi32(_mm512_madd_epi16(after, pair_weights), along);
    const __m512i sum = _mm512_add_epi32(_mm512_add_epi32(near, far), _mm512_set1_epi32(32768));
    _mm512_mask_cvtepi32_storeu_epi16(out + i, lanes, _mm512_srai_epi32(sum, 16));
  }
}

}  // namespace biseam::ring

#endif
