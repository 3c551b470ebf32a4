#include "frame/remap/sample_avx512.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>

namespace biseam {

namespace {

// What the loops find out about a vector one step ahead of mixing it.
struct Vector {
  __m512 fx, fy;
  Place at;
};

BISEAM_STEP Vector luma_vector(const float* entries, const uint8_t* source, std::ptrdiff_t stride) {
  const Split s = split(luma_positions(entries));
  return {s.fx, s.fy, place<LumaShape>(pair_up(s), is_known(_mm512_or_epi32(s.column, s.row)), source, stride)};
}

// The second load ends where the last entry does, two floats short of the next one's place.
BISEAM_STEP Positions chroma_positions(const float* entries, float y_scale) {
  const __m512i u = _mm512_setr_epi32(0, 0, 4, 4, 8, 8, 12, 12, 18, 18, 22, 22, 26, 26, 30, 30);
  const __m512i v = _mm512_setr_epi32(1, 1, 5, 5, 9, 9, 13, 13, 19, 19, 23, 23, 27, 27, 31, 31);
  const __m512 a = _mm512_loadu_ps(entries), b = _mm512_loadu_ps(entries + 14);
  return {_mm512_mul_ps(_mm512_permutex2var_ps(a, u, b), all(0.5f)),
          _mm512_mul_ps(_mm512_permutex2var_ps(a, v, b), all(y_scale))};
}

BISEAM_STEP Vector chroma_vector(const float* entries, float y_scale, const uint8_t* source, std::ptrdiff_t stride) {
  const Split s = split(chroma_positions(entries, y_scale));
  return {s.fx, s.fy, place<ChromaShape>(pair_up(s), is_known(_mm512_or_epi32(s.column, s.row)), source, stride)};
}

}  // namespace

// Both loops find the place of the next vector before they mix the one at hand: neither step waits for the other.  The last
// vector ends with the row and may repeat samples.

BISEAM_AVX512 void sample_luma_row_avx512(const float* entries, const uint8_t* source, std::ptrdiff_t stride,
                                          uint8_t* destination, int count) noexcept {
  if (count < kLuma) return sample_luma_row_scalar(entries, source, stride, destination, count);
  const int last = count - kLuma;
  Vector vector = luma_vector(entries, source, stride);
  for (int k = 0;;) {
    const int next = std::min(k + kLuma, last);
    ask_for(entries + 2 * next, kFloatsAhead * sizeof(float));
    ask_for(entries + 2 * next, (kFloatsAhead + kLuma) * sizeof(float));
    const Vector next_vector = luma_vector(entries + 2 * next, source, stride);
    if (vector.at.window != nullptr) {
      mix_luma(vector.fx, vector.fy, pick_luma(load_luma(vector.at.window, stride), vector.at.x_y), destination + k);
    } else {
      sample_luma_row_avx2(entries + 2 * k, source, stride, destination + k, kLuma);
    }
    if (k == last) return;
    k = next, vector = next_vector;
  }
}

BISEAM_AVX512 void sample_chroma_row_avx512(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float y_factor,
                                            uint8_t* destination, int count) noexcept {
  if (count < kChroma) {
    return sample_chroma_row_scalar(entries, source, stride, y_factor, destination, count);
  }
  const float y_scale = 1.0f / y_factor;
  const int last = count - kChroma;
  Vector vector = chroma_vector(entries, y_scale, source, stride);
  for (int k = 0;;) {
    const int next = std::min(k + kChroma, last);
    const Vector next_vector = chroma_vector(entries + 4 * next, y_scale, source, stride);
    if (vector.at.window != nullptr) {
      mix_chroma(vector.fx, vector.fy, pick_chroma(load_chroma(vector.at.window, stride), vector.at.x_y), destination + 2 * k);
    } else {
      sample_chroma_row_avx2(entries + 4 * k, source, stride, y_factor, destination + 2 * k, kChroma);
    }
    if (k == last) return;
    k = next, vector = next_vector;
  }
}

}  // namespace biseam

#endif
