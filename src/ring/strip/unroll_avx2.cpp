#include "ring/strip/unroll_kernels.hpp"

#if defined(BISEAM_X86_64)

#include <cstring>

#include "base/intrinsics.hpp"

namespace biseam::ring {

namespace {

BISEAM_AVX2 inline __m128i load_four(const int16_t* samples) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(samples));
}

BISEAM_AVX2 inline __m128i pair_of(const int16_t* weights) {
  int32_t pair;
  std::memcpy(&pair, weights, sizeof pair);
  return _mm_set1_epi32(pair);
}

// The same samples of two splines' rows, a in the lower half.
BISEAM_AVX2 inline __m256i both(__m128i a, __m128i b) { return _mm256_inserti128_si256(_mm256_castsi128_si256(a), b, 1); }

BISEAM_AVX2 inline __m128i row_pairs(const int16_t* corner, ptrdiff_t stride) {
  return _mm_unpacklo_epi16(load_four(corner), load_four(corner + stride));
}

BISEAM_AVX2 inline __m256i rounded(__m256i sums) {
  return _mm256_srai_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(kSplineOne / 2)), kSplineBits);
}

// Rounded column means of two splines.
BISEAM_AVX2 inline __m256i column_means(const int16_t* a, const int16_t* b, const int16_t* down_a, const int16_t* down_b,
                                        ptrdiff_t stride) {
  const __m256i upper =
      _mm256_madd_epi16(both(row_pairs(a, stride), row_pairs(b, stride)), both(pair_of(down_a), pair_of(down_b)));
  const __m256i lower = _mm256_madd_epi16(both(row_pairs(a + 2 * stride, stride), row_pairs(b + 2 * stride, stride)),
                                          both(pair_of(down_a + 2), pair_of(down_b + 2)));
  return rounded(_mm256_add_epi32(upper, lower));
}

// What ReducedAxis::index_of gives, for eight places.
BISEAM_AVX2 inline __m256i indices_of(const ReducedAxis& axis, const int32_t* places) {
  const __m256i place = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(places));
  const __m256i offset = _mm256_set1_epi32((1 << (axis.shift + 7)) - axis.origin);
  const __m256i index = _mm256_sra_epi32(_mm256_add_epi32(place, offset), _mm_cvtsi32_si128(axis.shift + 8));
  return _mm256_min_epi32(_mm256_max_epi32(index, _mm256_set1_epi32(-256)), _mm256_set1_epi32(256 * axis.count - 1));
}

}  // namespace

BISEAM_AVX2 void unroll_avx2(const ReducedPlane& plane, const int32_t* x, const int32_t* y, int16_t* out, int count) noexcept {
  int i = 0;
  for (; i + 8 <= count; i += 8) {
    alignas(32) int32_t at_x[8], at_y[8];
    _mm256_store_si256(reinterpret_cast<__m256i*>(at_x), indices_of(plane.x, x + i));
    _mm256_store_si256(reinterpret_cast<__m256i*>(at_y), indices_of(plane.y, y + i));
    __m256i sums[2];
    for (int half = 0; half < 2; ++half) {
      // Splines j and j + 2 share a vector, so that packed means stand as j, j + 1 | j + 2, j + 3.
      const int j = 4 * half;
      const int16_t *corner[4], *across[4], *down[4];
      for (int k = 0; k < 4; ++k) {
        corner[k] = spline_corner(plane, at_x[j + k] >> 8, at_y[j + k] >> 8);
        across[k] = kSplineTable.weights[at_x[j + k] & 255];
        down[k] = kSplineTable.weights[at_y[j + k] & 255];
      }
      const __m256i means = _mm256_packs_epi32(column_means(corner[0], corner[2], down[0], down[2], plane.stride),
                                               column_means(corner[1], corner[3], down[1], down[3], plane.stride));
      const __m256i weights = both(_mm_unpacklo_epi64(load_four(across[0]), load_four(across[1])),
                                   _mm_unpacklo_epi64(load_four(across[2]), load_four(across[3])));
      sums[half] = _mm256_madd_epi16(means, weights);
    }
    // Sums of pairs: 0 1 4 5 | 2 3 6 7.
    const __m256i values = rounded(_mm256_hadd_epi32(sums[0], sums[1]));
    const __m128i packed = _mm_packs_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_shuffle_epi32(packed, _MM_SHUFFLE(3, 1, 2, 0)));
  }
  kUnrollRow.scalar(plane, x + i, y + i, out + i, count - i);
}

}  // namespace biseam::ring

#endif
