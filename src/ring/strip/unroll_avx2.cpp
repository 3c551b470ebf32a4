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
BISEAM_AVX2 inline __m256i column_means(const int16_t* a, const int16_t* b, __m256i upper_down, __m256i lower_down,
                                        ptrdiff_t stride) {
  const __m256i upper = _mm256_madd_epi16(both(row_pairs(a, stride), row_pairs(b, stride)), upper_down);
  const __m256i lower =
      _mm256_madd_epi16(both(row_pairs(a + 2 * stride, stride), row_pairs(b + 2 * stride, stride)), lower_down);
  return rounded(_mm256_add_epi32(upper, lower));
}

// Sums of pairs of columns of four splines at offsets from samples: splines j and j + 2 share a vector, so that packed means
// stand as j, j + 1 | j + 2, j + 3.
struct FourSplines {
  __m256i down[4], across;
};

BISEAM_AVX2 inline FourSplines load_weights(const int32_t* phase_x, const int32_t* phase_y) {
  const int16_t* w[4];
  for (int k = 0; k < 4; ++k) w[k] = kSplineTable.weights[phase_y[k]];
  FourSplines splines;
  splines.down[0] = both(pair_of(w[0]), pair_of(w[2]));
  splines.down[1] = both(pair_of(w[0] + 2), pair_of(w[2] + 2));
  splines.down[2] = both(pair_of(w[1]), pair_of(w[3]));
  splines.down[3] = both(pair_of(w[1] + 2), pair_of(w[3] + 2));
  for (int k = 0; k < 4; ++k) w[k] = kSplineTable.weights[phase_x[k]];
  splines.across =
      both(_mm_unpacklo_epi64(load_four(w[0]), load_four(w[1])), _mm_unpacklo_epi64(load_four(w[2]), load_four(w[3])));
  return splines;
}

BISEAM_AVX2 inline __m256i four_sums(const int16_t* samples, const int32_t* offsets, const FourSplines& splines,
                                     ptrdiff_t stride) {
  const __m256i even = column_means(samples + offsets[0], samples + offsets[2], splines.down[0], splines.down[1], stride);
  const __m256i odd = column_means(samples + offsets[1], samples + offsets[3], splines.down[2], splines.down[3], stride);
  return _mm256_madd_epi16(_mm256_packs_epi32(even, odd), splines.across);
}

BISEAM_AVX2 inline void store_eight(__m256i first_sums, __m256i second_sums, int16_t* out) {
  // Sums of pairs: 0 1 4 5 | 2 3 6 7.
  const __m256i values = rounded(_mm256_hadd_epi32(first_sums, second_sums));
  const __m128i packed = _mm_packs_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi32(packed, _MM_SHUFFLE(3, 1, 2, 0)));
}

// What ReducedAxis::index_of gives, for eight places.
BISEAM_AVX2 inline __m256i indices_of(const ReducedAxis& axis, const int32_t* places) {
  const __m256i place = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(places));
  const __m256i offset = _mm256_set1_epi32((1 << (axis.shift + 7)) - axis.origin);
  const __m256i index = _mm256_sra_epi32(_mm256_add_epi32(place, offset), _mm_cvtsi32_si128(axis.shift + 8));
  return _mm256_min_epi32(_mm256_max_epi32(index, _mm256_set1_epi32(-256)), _mm256_set1_epi32(256 * axis.count - 1));
}

BISEAM_AVX2 inline void store(int32_t* out, __m256i value) { _mm256_store_si256(reinterpret_cast<__m256i*>(out), value); }

}  // namespace

BISEAM_AVX2 void unroll_avx2(const ReducedPlanes& planes, const int32_t* x, const int32_t* y, int16_t* const* out,
                             int count) noexcept {
  const __m256i stride = _mm256_set1_epi32(static_cast<int>(planes.stride)), phases = _mm256_set1_epi32(255);
  const int16_t *first = spline_corner(planes, 0, 0, 0), *second = planes.count == 2 ? spline_corner(planes, 1, 0, 0) : nullptr;
  int i = 0;
  for (; i + 8 <= count; i += 8) {
    alignas(32) int32_t offsets[8], phase_x[8], phase_y[8];
    const __m256i at_x = indices_of(planes.x, x + i), at_y = indices_of(planes.y, y + i);
    store(phase_x, _mm256_and_si256(at_x, phases));
    store(phase_y, _mm256_and_si256(at_y, phases));
    store(offsets, _mm256_add_epi32(_mm256_mullo_epi32(_mm256_srai_epi32(at_y, 8), stride), _mm256_srai_epi32(at_x, 8)));
    const FourSplines low = load_weights(phase_x, phase_y);
    const __m256i first_low = four_sums(first, offsets, low, planes.stride);
    const __m256i second_low = second != nullptr ? four_sums(second, offsets, low, planes.stride) : first_low;
    const FourSplines high = load_weights(phase_x + 4, phase_y + 4);
    store_eight(first_low, four_sums(first, offsets + 4, high, planes.stride), out[0] + i);
    if (second != nullptr) store_eight(second_low, four_sums(second, offsets + 4, high, planes.stride), out[1] + i);
  }
  int16_t* const rest[2] = {out[0] + i, second != nullptr ? out[1] + i : nullptr};
  kUnrollRow.scalar(planes, x + i, y + i, rest, count - i);
}

}  // namespace biseam::ring

#endif
