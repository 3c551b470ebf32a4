#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"
#include "ring/sample/tiles_avx512.hpp"
#include "ring/sample/weights_avx512.hpp"
#include "ring/sample/windows_avx512.hpp"

#if defined(BISEAM_X86_64)

#include <cstdlib>
#include <type_traits>

// Bytes.  Pairs are taken apart when they are loaded, or when their taps are taken out of registers.
namespace biseam::ring {

namespace {

constexpr int kWindowBytes = 16;

BISEAM_STEP __m512i all_bytes(int8_t value) { return _mm512_set1_epi8(value); }

// As many columns as rows: what tiles need unless they are stretched.
constexpr int kNarrowColumns = 8;

// Where a lane's first tap lies in its window.  Positions count from the window's corner.
BISEAM_STEP __m512i first_bytes(__m512i x, __m512i y) {
  return _mm512_ternarylogic_epi32(bits_from<12>(y), bits_from<16>(x), all_bytes(0x0f), 0xd8);  // the row's bits above these
}

// The first or second bytes of pairs that lie in two vectors of two rows.
BISEAM_STEP __m512i every_other(__m512i upper, __m512i lower, int first) {
  const __m512i column = _mm512_broadcast_i32x4(_mm_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30));
  const __m512i row = _mm512_setr_epi32(0, 0, 0, 0, 0x20202020, 0x20202020, 0x20202020, 0x20202020, 0x40404040, 0x40404040,
                                        0x40404040, 0x40404040, 0x60606060, 0x60606060, 0x60606060, 0x60606060);
  return _mm512_permutex2var_epi8(upper, _mm512_add_epi8(_mm512_add_epi8(column, row), all_bytes(static_cast<int8_t>(first))),
                                  lower);
}

template <int components>
struct ByteLoader {
  template <int rows>
  BISEAM_STEP void load(const uint8_t* window, std::ptrdiff_t stride, __m512i* of) const {
    if constexpr (components == 1) {
      of[0] = load_4x16<rows>(window, stride);
    } else {
      const __m512i upper = load_two<(rows > 1)>(window, stride);
      const __m512i lower = rows > 2 ? load_two<(rows > 3)>(window + 2 * stride, stride) : upper;
      for (int c = 0; c < components; ++c) of[c] = every_other(upper, lower, c);
    }
  }
};

// Bytes k rows below those that first tells.
template <class Window, int count>
BISEAM_STEP __m512i pick_bytes(const Fours<count>& fours, __m512i first, int k) {
  const int upper = Window::kOne ? 0 : k, below = Window::kOne ? k : 0;
  return _mm512_permutex2var_epi8(
      fours.rows[upper], _mm512_add_epi8(first, all_bytes(static_cast<int8_t>(kWindowBytes * below))), fours.rows[upper + 4]);
}

// 64 less the phase, and the phase, alternately as bytes or words.
BISEAM_STEP __m512i two_weights_across(__m512i x) {
  const __m512i turned = _mm512_ternarylogic_epi32(bits_from<10>(x), all_bytes(63), all(0x00ff00ff), 0x6a);
  return _mm512_add_epi8(turned, all(0x00410041));  // (phase & 63) ^ 255 = 255 - phase
}

BISEAM_STEP __m512i two_weights_down(__m512i y) {
  const __m512i turned = _mm512_ternarylogic_epi32(bits_from<10>(y), all(0x003f003f), all(0x0000ffff), 0x6a);
  return _mm512_add_epi16(turned, all(0x00000041));
}

// Rows of a window; and a lane's four bytes, two rows of two, where its taps are two either way.
template <class Window, int components, bool narrow = Window::kColumns == kNarrowColumns>
struct ByteRows : TileRows<Window, components, ByteLoader<components>> {
  BISEAM_STEP ByteRows(const uint8_t* window, std::ptrdiff_t stride)
      : TileRows<Window, components, ByteLoader<components>>(window, stride, {}) {}

  BISEAM_STEP static __m512i places_of_four(__m512i x, __m512i y) {
    return _mm512_add_epi8(first_bytes(x, y), all(0x11100100));
  }
  BISEAM_STEP __m512i pick_four(__m512i places, int c) const { return pick_bytes<Window>(this->of[c], places, 0); }
};

// Eight rows of eight bytes.
template <class Window>
struct ByteRows<Window, 1, true> {
  __m512i rows;

  BISEAM_STEP ByteRows(const uint8_t* window, std::ptrdiff_t stride) : rows(load_8x8(window, stride)) {}

  BISEAM_STEP static __m512i places_of_four(__m512i x, __m512i y) {
    const __m512i first = _mm512_ternarylogic_epi32(bits_from<13>(y), bits_from<16>(x), all_bytes(0x07), 0xd8);
    return _mm512_add_epi8(first, all(0x09080100));
  }
  BISEAM_STEP __m512i pick_four(__m512i places, int) const { return _mm512_permutexvar_epi8(places, rows); }
};

// Pairs lie in two vectors as they lie in the picture.
template <class Window>
struct ByteRows<Window, 2, true> {
  __m512i upper, lower;

  BISEAM_STEP ByteRows(const uint8_t* window, std::ptrdiff_t stride)
      : upper(load_4x16<4>(window, stride)), lower(load_4x16<4>(window + 4 * stride, stride)) {}

  BISEAM_STEP static __m512i places_of_four(__m512i x, __m512i y) {
    const __m512i column = _mm512_and_si512(bits_from<15>(x), all_bytes(0x0e));
    const __m512i first = _mm512_ternarylogic_epi32(column, bits_from<12>(y), all_bytes(0x70), 0xf8);  // a | b & c
    return _mm512_add_epi8(first, all(0x12100200));
  }
  BISEAM_STEP __m512i pick_four(__m512i places, int c) const {
    return _mm512_permutex2var_epi8(upper, _mm512_add_epi8(places, all_bytes(static_cast<int8_t>(c))), lower);
  }
};

// Sums of a tile, of each component, on top of what they are.
template <class Rows, int components>
BISEAM_STEP void sum_two(const Rows& rows, __m512i x, __m512i y, __m512i (&sums)[components]) {
  const __m512i places = Rows::places_of_four(x, y);
  const __m512i across = two_weights_across(x), down = two_weights_down(y);
  for (int c = 0; c < components; ++c) {
    sums[c] = _mm512_dpwssd_epi32(sums[c], _mm512_maddubs_epi16(rows.pick_four(places, c), across), down);
  }
}

template <class Window, class Rows, int components>
BISEAM_STEP void sum_more(const SampleSource& source, const int8_t* parts, const Rows& rows, __m512i x, __m512i y,
                          __m512i (&sums)[components]) {
  constexpr int taps = Window::kTaps, bit = 16 - Phases<taps>::kBits;
  const __m512i bytes = _mm512_add_epi8(first_bytes(x, y), all(0x03020100));
  const auto weights = look_up_all<SampleType::bytes, taps>(parts, bits_from<bit>(x), bits_from<bit>(y));
  for (int c = 0; c < components; ++c) {
    for (int k = 0; k < taps; k += 2) {
      const __m512i picked[2] = {pick_bytes<Window>(rows.of[c], bytes, k), pick_bytes<Window>(rows.of[c], bytes, k + 1)};
      const __m512i upper = weigh_across<SampleType::bytes, taps>(source, weights, &picked[0]);
      const __m512i lower = weigh_across<SampleType::bytes, taps>(source, weights, &picked[1]);
      const __m512i both = _mm512_mask_blend_epi16(0xAAAAAAAA, upper, _mm512_slli_epi32(lower, 16));
      sums[c] = _mm512_dpwssd_epi32(sums[c], both, weights.down[k / 2]);
    }
  }
}

// Of a sum, what lies below a result.  Weights between two samples are 64ths both ways.
template <int taps, SampleOutput output>
constexpr int kBelow = (taps == 2 ? 6 : kTapBits) + (output == SampleOutput::fine ? 0 : kFineBits - 8);

// Packing leaves parts of 128 bits where they are, so that tiles become rows again.
template <SampleOutput output>
BISEAM_STEP void store_samples(const Vectors& tiles, uint8_t* results, std::ptrdiff_t stride) {
  const __m512i left = _mm512_packs_epi32(tiles.of[0], tiles.of[1]), right = _mm512_packs_epi32(tiles.of[2], tiles.of[3]);
  if constexpr (output == SampleOutput::fine) {
    store_rows(left, results, stride);
    store_rows(right, results + 16, stride);
  } else {
    store_rows(_mm512_packus_epi16(left, right), results, stride);
  }
}

template <SampleOutput output>
BISEAM_STEP void store_pairs(const Vectors& first, const Vectors& second, uint8_t* results, std::ptrdiff_t stride) {
  for (int i = 0; i < kTiles; i += 2) {
    const __m512i us = _mm512_packs_epi32(first.of[i], first.of[i + 1]);
    const __m512i vs = _mm512_packs_epi32(second.of[i], second.of[i + 1]);
    if constexpr (output == SampleOutput::fine) {
      store_rows(_mm512_unpacklo_epi16(us, vs), results + 16 * i, stride);
      store_rows(_mm512_unpackhi_epi16(us, vs), results + 16 * i + 16, stride);
    } else {
      const __m512i order = _mm512_broadcast_i32x4(_mm_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15));
      store_rows(_mm512_shuffle_epi8(_mm512_packus_epi16(us, vs), order), results + 8 * i, stride);
    }
  }
}

template <int components, int taps, SampleOutput output>
struct ByteTiles {
  static constexpr int kUnit = components, kTaps = taps;
  static constexpr int kBytes = output_bytes_of(components == 1 ? SampleType::bytes : SampleType::byte_pairs, output);
  static constexpr SampleRow* kOtherwise = sample_row_avx2;
  template <int columns, int places>
  using Window = TileWindow<kUnit, columns, taps, places>;
  using Windows =
      std::conditional_t<taps == 2,
                         TileWindows<Window<kNarrowColumns, kLowPlaces<taps>>, Window<kWindowBytes, kLowPlaces<taps>>>,
                         TileWindows<Window<kWindowBytes, kLowPlaces<taps>>, Window<kWindowBytes, 8>>>;

  SampleSource source;
  const int8_t* parts;

  BISEAM_STEP explicit ByteTiles(const SampleJob& job) : source(job.source), parts(job.across->parts) {}

  template <class Window>
  BISEAM_STEP void sample_windows(const PlacedTiles& placed, const SampleRows& at) const {
    Vectors results[components];
    for (int i = 0; i < kTiles; ++i) {
      const ByteRows<Window, components> rows(source.first + placed.offsets[kSide * i], source.stride);
      constexpr int below = kBelow<taps, output>;
      __m512i sums[components];
      for (__m512i& sum : sums) sum = all(1 << (below - 1));
      if constexpr (taps == 2) {
        sum_two(rows, placed.across.of[i], placed.down.of[i], sums);
      } else {
        sum_more<Window>(source, parts, rows, placed.across.of[i], placed.down.of[i], sums);
      }
      for (int c = 0; c < components; ++c) results[c].of[i] = _mm512_srai_epi32(sums[c], below);
    }
    if constexpr (components == 1) {
      store_samples<output>(results[0], at.results, at.stride);
    } else {
      store_pairs<output>(results[0], results[1], at.results, at.stride);
    }
  }
};

template <int components, int taps>
BISEAM_STEP void sample_taps(const SampleJob& job, const SampleRows& rows) {
  if (job.output == SampleOutput::fine) {
    sample_all_tiles<ByteTiles<components, taps, SampleOutput::fine>>(job, rows);
  } else {
    sample_all_tiles<ByteTiles<components, taps, SampleOutput::samples>>(job, rows);
  }
}

template <int components>
BISEAM_STEP void sample_components(const SampleJob& job, const SampleRows& rows) {
  job.across->taps == 2 ? sample_taps<components, 2>(job, rows) : sample_taps<components, 4>(job, rows);
}

}  // namespace

bool are_tiles(const SampleJob& job) noexcept {
  constexpr int64_t most = INT32_MAX / 2;
  const int64_t stride = job.source.stride;
  return job.across == job.down && (job.across->taps == 2 || (job.across->taps == 4 && job.across->phase_bits == 7)) &&
         std::abs(stride) <= most && std::abs(stride) * job.source.height <= most;
}

BISEAM_AVX512 void sample_tiles_avx512(const SampleJob& job, const SampleRows& rows) noexcept {
  is_pairs(job.source.type) ? sample_components<2>(job, rows) : sample_components<1>(job, rows);
}

}  // namespace biseam::ring

#endif
