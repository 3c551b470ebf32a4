#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"
#include "ring/sample/tiles_avx512.hpp"
#include "ring/sample/weights_avx512.hpp"
#include "ring/sample/windows_avx512.hpp"

#if defined(BISEAM_X86_64)

#include <type_traits>

// Words.  A vector holds two taps of each lane; pairs are taken apart when they are loaded.
namespace biseam::ring {

namespace {

constexpr int kWindowWords = 8;

BISEAM_STEP __m512i all_words(int value) { return _mm512_set1_epi16(static_cast<int16_t>(value)); }

// Where a lane's first two taps lie in its window.  Positions count from the window's corner.  Only the lower six bits of a
// word mean anything.
BISEAM_STEP __m512i first_words(__m512i x, __m512i y) {
  const __m512i first = _mm512_ternarylogic_epi32(bits_from<13>(y), bits_from<16>(x), all(0x07070707), 0xd8);
  return _mm512_add_epi16(first, all(0x00010000));
}

// Of samples as they are stored.
struct Values {
  __m128i shift;
  __m512i most;

  BISEAM_STEP explicit Values(const SampleSource& source)
      : shift(_mm_cvtsi32_si128(source.shift)), most(all_words((1 << source.bits) - 1)) {}

  BISEAM_STEP __m512i of(__m512i stored) const { return _mm512_min_epu16(_mm512_srl_epi16(stored, shift), most); }
};

// The first or second words of pairs that lie in two vectors of two rows.
BISEAM_STEP __m512i every_other(__m512i upper, __m512i lower, int first) {
  const __m512i column = _mm512_broadcast_i32x4(_mm_setr_epi16(0, 2, 4, 6, 8, 10, 12, 14));
  const __m512i row = _mm512_setr_epi64(0, 0, 0x0010001000100010, 0x0010001000100010, 0x0020002000200020, 0x0020002000200020,
                                        0x0030003000300030, 0x0030003000300030);
  return _mm512_permutex2var_epi16(upper, _mm512_add_epi16(_mm512_add_epi16(column, row), all_words(first)), lower);
}

template <int components>
struct WordLoader {
  Values values;

  template <int rows>
  BISEAM_STEP void load(const uint8_t* window, std::ptrdiff_t stride, __m512i* of) const {
    if constexpr (components == 1) {
      of[0] = values.of(load_4x16<rows>(window, stride));
    } else {
      const __m512i upper = values.of(load_two<(rows > 1)>(window, stride));
      const __m512i lower = rows > 2 ? values.of(load_two<(rows > 3)>(window + 2 * stride, stride)) : upper;
      for (int c = 0; c < components; ++c) of[c] = every_other(upper, lower, c);
    }
  }
};

// Two taps of each lane k rows below the first ones, and so many to the right.
template <class Window, int count>
BISEAM_STEP __m512i pick_words(const Fours<count>& fours, __m512i first, int k, int right) {
  const int upper = Window::kOne ? 0 : k, below = Window::kOne ? k : 0;
  return _mm512_permutex2var_epi16(fours.rows[upper], _mm512_add_epi16(first, all_words(kWindowWords * below + right)),
                                   fours.rows[upper + 4]);
}

template <int components, int taps, SampleOutput output>
struct WordTiles {
  static constexpr int kUnit = 2 * components, kTaps = taps, kBytes = 2 * components;
  static constexpr SampleRow* kOtherwise = sample_row_avx512;
  template <int places>
  using Window = TileWindow<kUnit, kWindowWords, taps, places>;
  using Low = Window<kLowPlaces<taps>>;
  using Windows = std::conditional_t<taps == 2, TileWindows<Low>, TileWindows<Low, Window<8>>>;
  template <class Window>
  using Rows = TileRows<Window, components, WordLoader<components>>;

  SampleSource source;
  const int8_t* parts;
  Finish finish;

  BISEAM_STEP explicit WordTiles(const SampleJob& job) : source(job.source), parts(job.across->parts), finish(job) {}

  // The first sum of a row, rounded.
  template <class Window, int count>
  BISEAM_STEP __m512i weigh_row(const Fours<count>& fours, const __m512i* weights, __m512i first, int k) const {
    const int shift = across_shift(source);
    __m512i sum = all(1 << (shift - 1));
    for (int right = 0; right < taps; right += 2) {
      sum = _mm512_dpwssd_epi32(sum, pick_words<Window>(fours, first, k, right), weights[right / 2]);
    }
    return _mm512_sra_epi32(sum, _mm_cvtsi32_si128(shift));
  }

  template <class Window>
  BISEAM_STEP void sum_tile(const Rows<Window>& tile, __m512i x, __m512i y, __m512i* sums) const {
    constexpr int bit = 16 - Phases<taps>::kBits;
    const __m512i first = first_words(x, y), columns = bits_from<bit>(x), rows = bits_from<bit>(y);
    __m512i across[taps / 2], down[taps / 2];
    for (int k = 0; k < taps / 2; ++k) {
      across[k] = to_words<taps>(look_up_two<taps>(parts, columns, 2 * k, ~__mmask64{0}));
      down[k] = to_words<taps>(look_up_two<taps>(parts, rows, 2 * k, ~__mmask64{0}));
    }
    for (int c = 0; c < components; ++c) {
      __m512i sum = all(finish.half);
      for (int k = 0; k < taps; k += 2) {
        const __m512i upper = weigh_row<Window>(tile.of[c], across, first, k);
        const __m512i lower = weigh_row<Window>(tile.of[c], across, first, k + 1);
        const __m512i both = _mm512_mask_blend_epi16(0xAAAAAAAA, upper, _mm512_slli_epi32(lower, 16));
        sum = _mm512_dpwssd_epi32(sum, both, down[k / 2]);
      }
      sums[c] = _mm512_sra_epi32(sum, _mm_cvtsi32_si128(finish.shift));
    }
  }

  // Two tiles side by side, which packing leaves in their parts of 128 bits.
  BISEAM_STEP __m512i packed(__m512i left, __m512i right) const {
    if constexpr (output == SampleOutput::fine) return _mm512_packs_epi32(left, right);
    const __m512i values = _mm512_min_epu16(_mm512_packus_epi32(left, right), all_words(finish.high));
    return _mm512_sll_epi16(values, _mm_cvtsi32_si128(finish.up));
  }

  template <class Window>
  BISEAM_STEP void sample_windows(const PlacedTiles& placed, const SampleRows& at) const {
    const WordLoader<components> loader{Values(source)};
    __m512i sums[kTiles][components];
    for (int i = 0; i < kTiles; ++i) {
      const Rows<Window> tile(source.first + placed.offsets[kSide * i], source.stride, loader);
      sum_tile<Window>(tile, placed.across.of[i], placed.down.of[i], sums[i]);
    }
    for (int i = 0; i < kTiles; i += 2) {
      uint8_t* const results = at.results + kSide * i * kBytes;
      const __m512i first = packed(sums[i][0], sums[i + 1][0]);
      if constexpr (components == 1) {
        store_rows(first, results, at.stride);
      } else {
        const __m512i second = packed(sums[i][1], sums[i + 1][1]);
        store_rows(_mm512_unpacklo_epi16(first, second), results, at.stride);
        store_rows(_mm512_unpackhi_epi16(first, second), results + 16, at.stride);
      }
    }
  }
};

template <int components, int taps>
BISEAM_STEP void sample_taps(const SampleJob& job, const SampleRows& rows) {
  if (job.output == SampleOutput::fine) {
    sample_all_tiles<WordTiles<components, taps, SampleOutput::fine>>(job, rows);
  } else {
    sample_all_tiles<WordTiles<components, taps, SampleOutput::samples>>(job, rows);
  }
}

template <int components>
BISEAM_STEP void sample_components(const SampleJob& job, const SampleRows& rows) {
  job.across->taps == 2 ? sample_taps<components, 2>(job, rows) : sample_taps<components, 4>(job, rows);
}

}  // namespace

BISEAM_AVX512 void sample_word_tiles_avx512(const SampleJob& job, const SampleRows& rows) noexcept {
  is_pairs(job.source.type) ? sample_components<2>(job, rows) : sample_components<1>(job, rows);
}

}  // namespace biseam::ring

#endif
