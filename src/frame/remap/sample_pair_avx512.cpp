#include "frame/remap/sample_avx512.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <cstdint>
#include <initializer_list>

namespace biseam {

namespace {

// 16 columns of both rows: the rows name nearly the same samples and share a window.
struct LumaBlock {
  __m512 fx[2], fy[2];
  __m512i x_y[2];
  const uint8_t* window;  // null: the samples are too far apart
};

struct ChromaVector {
  __m512 fx, fy;
  Place at;
};

struct Block {
  LumaBlock luma;
  ChromaVector chroma;
};

// How chroma rows are counted: y_scale chroma rows for a luma row, y_scale = 2^-shift.
struct ChromaRows {
  float y_scale;
  __m512i shifts;  // columns by 1, rows by shift
};

BISEAM_STEP LumaBlock place_luma(const Split& upper, const Split& lower, __m512i upper_pairs, __m512i lower_pairs, bool known,
                                 const SampleSource& source) {
  const __m128i corner = window_corner<LumaShape>(_mm512_max_epu16(upper_pairs, lower_pairs));
  const __m512i upper_x_y = in_window(upper_pairs, corner), lower_x_y = in_window(lower_pairs, corner);
  const uint8_t* window = window_at<LumaShape>(corner, _mm512_or_epi32(upper_x_y, lower_x_y), source.luma, source.luma_stride);
  return {{upper.fx, lower.fx}, {upper.fy, lower.fy}, {upper_x_y, lower_x_y}, known ? window : nullptr};
}

// Every second entry of the upper row, in the two lanes that it has already.  Its integer parts are the luma's, halved.
BISEAM_STEP ChromaVector place_chroma(const Positions& upper, __m512i upper_pairs, bool known, const ChromaRows& rows,
                                      const SampleSource& source) {
  const Split s = split(
      {_mm512_mul_ps(_mm512_moveldup_ps(upper.u), all(0.5f)), _mm512_mul_ps(_mm512_moveldup_ps(upper.v), all(rows.y_scale))});
  const __m512i pairs = _mm512_srlv_epi16(_mm512_shuffle_epi32(upper_pairs, _MM_PERM_CCAA), rows.shifts);
  return {s.fx, s.fy, place<ChromaShape>(pairs, known, source.chroma, source.chroma_stride)};
}

// Brings what the next pair of rows has at these columns to the second-level cache: rows follow each other as these two do.
// There may be no next pair; nothing is read.
BISEAM_STEP void ask_for_next_pair(const float* upper_entries, const float* lower_entries) {
  const uintptr_t lower = reinterpret_cast<uintptr_t>(lower_entries), row = lower - reinterpret_cast<uintptr_t>(upper_entries);
  for (const uintptr_t entries : {lower + row, lower + 2 * row}) {
    _mm_prefetch(reinterpret_cast<const char*>(entries), _MM_HINT_T1);
    _mm_prefetch(reinterpret_cast<const char*>(entries + kLuma * sizeof(float)), _MM_HINT_T1);
  }
}

BISEAM_STEP Block place_block(const float* upper_entries, const float* lower_entries, const ChromaRows& rows,
                              const SampleSource& source) {
  ask_for_next_pair(upper_entries, lower_entries);
  const Positions at = luma_positions(upper_entries);
  const Split upper = split(at), lower = split(luma_positions(lower_entries));
  const __m512i upper_pairs = pair_up(upper), lower_pairs = pair_up(lower);
  const bool known =
      is_known(_mm512_or_epi32(_mm512_or_epi32(upper.column, upper.row), _mm512_or_epi32(lower.column, lower.row)));
  return {place_luma(upper, lower, upper_pairs, lower_pairs, known, source),
          place_chroma(at, upper_pairs, known, rows, source)};
}

BISEAM_STEP void mix_block_luma(const LumaBlock& block, std::ptrdiff_t stride, uint8_t* upper, uint8_t* lower) {
  const Window window = load_luma(block.window, stride);
  mix_luma(block.fx[0], block.fy[0], pick_luma(window, block.x_y[0]), upper);
  mix_luma(block.fx[1], block.fy[1], pick_luma(window, block.x_y[1]), lower);
}

}  // namespace

// The place of the next block is found before the one at hand is mixed: neither step waits for the other.  The last block ends
// with the rows, but for an odd last column, and may repeat samples.
BISEAM_AVX512 void sample_row_pair_avx512(const float* upper, const float* lower, const SampleSource& source, float y_factor,
                                          const SampleDestination& to, int count) noexcept {
  if (count < kLuma) {
    return sample_rows_one_by_one<sample_luma_row_avx512, sample_chroma_row_avx512>(upper, lower, source, y_factor, to, count);
  }
  const ChromaRows rows{1.0f / y_factor, all(1u | (y_factor == 2.0f ? 1u : 0u) << 16)};
  const int last = count / 2 * 2 - kLuma;
  Block block = place_block(upper, lower, rows, source);
  for (int k = 0;;) {
    const int next = std::min(k + kLuma, last);
    const Block next_block = place_block(upper + 2 * next, lower + 2 * next, rows, source);
    if (block.luma.window != nullptr) [[likely]] {
      mix_block_luma(block.luma, source.luma_stride, to.upper + k, to.lower + k);
    } else {
      sample_luma_row_avx512(upper + 2 * k, source.luma, source.luma_stride, to.upper + k, kLuma);
      sample_luma_row_avx512(lower + 2 * k, source.luma, source.luma_stride, to.lower + k, kLuma);
    }
    const ChromaVector& chroma = block.chroma;
    if (chroma.at.window != nullptr) [[likely]] {
      const Window window = load_chroma(chroma.at.window, source.chroma_stride);
      mix_chroma(chroma.fx, chroma.fy, pick_chroma(window, chroma.at.x_y), to.chroma + k);
    } else {
      sample_chroma_row_avx512(upper + 2 * k, source.chroma, source.chroma_stride, y_factor, to.chroma + k, kChroma);
    }
    if (k == last) break;
    k = next, block = next_block;
  }
  if (count % 2 == 0) return;
  sample_luma_row_scalar(upper + 2 * (count - 1), source.luma, source.luma_stride, to.upper + count - 1, 1);
  sample_luma_row_scalar(lower + 2 * (count - 1), source.luma, source.luma_stride, to.lower + count - 1, 1);
}

}  // namespace biseam

#endif
