#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"
#include "ring/sample/weights_avx512.hpp"
#include "ring/sample/windows_avx512.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <cstdlib>
#include <cstring>

// Bytes, in tiles of four by four positions: however rows of the panorama are turned in the picture, what a tile needs lies in
// a window of some rows of 16 bytes.  These are loaded whole, and the taps are taken out of registers byte by byte.  A lane of
// 32 bits is a sample, or a component of a pair.
namespace biseam::ring {

namespace {

// Four tiles side by side are worked on together: their positions come from memory row by row.
constexpr int kSide = 4, kTiles = 4, kColumns = kSide * kTiles;
constexpr int kWindowBytes = 16;

// unit: bytes of a column.  places: rows of the window that a first tap may lie in, at most 8.
template <int unit_, int taps_, int places_>
struct Tile {
  static constexpr int kUnit = unit_, kTaps = taps_, kPlaces = places_;
  static constexpr int kRows = kPlaces + kTaps - 1, kWindowColumns = kWindowBytes / kUnit;
  static constexpr int kColumnPlaces = kWindowColumns - kTaps + 1;
};

struct Vectors {
  __m512i of[kTiles];
};

BISEAM_STEP __m512i all_bytes(int8_t value) { return _mm512_set1_epi8(value); }

// Of first taps, with their phases.
template <int taps>
BISEAM_STEP Vectors load_positions(const int32_t* positions, std::ptrdiff_t pitch) {
  Vectors rows;
  for (int i = 0; i < kSide; ++i) {
    rows.of[i] =
        _mm512_add_epi32(_mm512_loadu_si512(positions + i * pitch), all(Phases<taps>::kHalf - (Phases<taps>::kBefore << 16)));
  }
  return rows;
}

// Four lanes of each of the four rows instead of a row: the tiles.
BISEAM_STEP Vectors to_tiles(const Vectors& rows) {
  const __m512i a = _mm512_shuffle_i32x4(rows.of[0], rows.of[1], 0x44), b = _mm512_shuffle_i32x4(rows.of[2], rows.of[3], 0x44);
  const __m512i c = _mm512_shuffle_i32x4(rows.of[0], rows.of[1], 0xee), d = _mm512_shuffle_i32x4(rows.of[2], rows.of[3], 0xee);
  return {{_mm512_shuffle_i32x4(a, b, 0x88), _mm512_shuffle_i32x4(a, b, 0xdd), _mm512_shuffle_i32x4(c, d, 0x88),
           _mm512_shuffle_i32x4(c, d, 0xdd)}};
}

// Of each tile the least and the largest sample, four times.
struct Range {
  __m512i least, largest;
};

BISEAM_STEP Range range_of(const Vectors& rows) {
  __m512i least = _mm512_min_epi32(_mm512_min_epi32(rows.of[0], rows.of[1]), _mm512_min_epi32(rows.of[2], rows.of[3]));
  __m512i largest = _mm512_max_epi32(_mm512_max_epi32(rows.of[0], rows.of[1]), _mm512_max_epi32(rows.of[2], rows.of[3]));
  least = _mm512_min_epi32(least, _mm512_shuffle_epi32(least, _MM_PERM_BADC));
  largest = _mm512_max_epi32(largest, _mm512_shuffle_epi32(largest, _MM_PERM_BADC));
  least = _mm512_min_epi32(least, _mm512_shuffle_epi32(least, _MM_PERM_CDAB));
  largest = _mm512_max_epi32(largest, _mm512_shuffle_epi32(largest, _MM_PERM_CDAB));
  return {_mm512_srai_epi32(least, 16), _mm512_srai_epi32(largest, 16)};
}

// Where the windows of four tiles begin, moved inside the picture; within: whether all taps lie in them.
struct Corners {
  __m512i column, row;
  bool within;
};

template <class Tile>
BISEAM_STEP Corners corners_of(const SampleSource& source, const Range& across, const Range& down) {
  const __m512i column = _mm512_min_epi32(across.least, all(source.width - Tile::kWindowColumns));
  const __m512i row = _mm512_min_epi32(down.least, all(source.height - Tile::kRows));
  const __mmask16 inside = _mm512_cmpge_epi32_mask(_mm512_or_si512(column, row), _mm512_setzero_si512());
  const __mmask16 narrow =
      _mm512_mask_cmplt_epi32_mask(inside, _mm512_sub_epi32(across.largest, column), all(Tile::kColumnPlaces));
  const __mmask16 low = _mm512_mask_cmplt_epi32_mask(narrow, _mm512_sub_epi32(down.largest, row), all(Tile::kPlaces));
  return {column, row, low == 0xFFFF};
}

// The same 8 bits of both lanes of 64, from a bit on, in each of their bytes.
template <int bit>
BISEAM_STEP __m512i bits_from(__m512i lanes) {
  return _mm512_multishift_epi64_epi8(_mm512_set1_epi64(0x2020202000000000 + 0x0101010101010101 * bit), lanes);
}

// Where a lane's first tap lies in its window.  Positions count from the window's corner.
template <int unit>
BISEAM_STEP __m512i first_bytes(__m512i x, __m512i y) {
  const __m512i rows = bits_from<12>(y), columns = unit == 1 ? bits_from<16>(x) : bits_from<15>(x);
  const __m512i first = _mm512_ternarylogic_epi32(rows, columns, all_bytes(0x0f), 0xd8);  // the row's bits above these
  return unit == 1 ? first : _mm512_and_si512(first, all_bytes(0x1e | 0x60));
}

// Taps of rows k to k + 3 of a window lie in upper, of rows k + 4 to k + 7 in lower: how far to look for them.
template <class Tile>
struct TileRows {
  static constexpr bool kOne = Tile::kRows <= 8;  // everything lies in one pair of vectors
  __m512i fours[kOne ? 5 : Tile::kTaps + 4];

  BISEAM_STEP TileRows(const uint8_t* window, std::ptrdiff_t stride) {
    if constexpr (kOne) {
      fours[0] = load_4x16<4>(window, stride);
      fours[4] = load_4x16<4>(window + 4 * stride, stride);
    } else {
      const auto loaded = load_fours<Tile::kTaps + 4>(window, stride);
      for (int k = 0; k < Tile::kTaps + 4; ++k) fours[k] = loaded.rows[k];
    }
  }

  // Bytes k rows below those that first tells.
  BISEAM_STEP __m512i row(__m512i first, int k) const {
    if constexpr (!kOne) return _mm512_permutex2var_epi8(fours[k], first, fours[k + 4]);
    return _mm512_permutex2var_epi8(fours[0], _mm512_add_epi8(first, all_bytes(static_cast<int8_t>(kWindowBytes * k))),
                                    fours[4]);
  }
};

// 64 less the phase, and the phase, alternately as bytes or words.
BISEAM_STEP __m512i two_weights_across(__m512i x) {
  const __m512i turned = _mm512_ternarylogic_epi32(bits_from<10>(x), all_bytes(63), all(0x00ff00ff), 0x6a);
  return _mm512_add_epi8(turned, all(0x00410041));  // (phase & 63) ^ 255 = 255 - phase
}

BISEAM_STEP __m512i two_weights_down(__m512i y) {
  const __m512i turned = _mm512_ternarylogic_epi32(bits_from<10>(y), all(0x003f003f), all(0x0000ffff), 0x6a);
  return _mm512_add_epi16(turned, all(0x00000041));
}

// Sums of a tile, of each component.
template <int unit>
struct TileSums {
  __m512i of[unit];
};

// All taps of a lane are four bytes: two rows of two.
template <class Tile>
BISEAM_STEP TileSums<Tile::kUnit> sum_two(const TileRows<Tile>& rows, __m512i x, __m512i y) {
  constexpr int unit = Tile::kUnit;
  const __m512i first = first_bytes<unit>(x, y), across = two_weights_across(x), down = two_weights_down(y);
  TileSums<unit> sums;
  for (int c = 0; c < unit; ++c) {
    const __m512i taps = rows.row(_mm512_add_epi8(first, all(0x01000100 * unit + 0x10100000 + 0x01010101 * c)), 0);
    sums.of[c] = _mm512_madd_epi16(_mm512_maddubs_epi16(taps, across), down);
  }
  return sums;
}

template <class Tile>
BISEAM_STEP TileSums<Tile::kUnit> sum_more(const SampleSource& source, const int8_t* parts, const TileRows<Tile>& rows,
                                           __m512i x, __m512i y) {
  constexpr int unit = Tile::kUnit, taps = Tile::kTaps, bit = 16 - Phases<taps>::kBits;
  const __m512i first = first_bytes<unit>(x, y);
  const auto weights = look_up_all<SampleType::bytes, taps>(parts, bits_from<bit>(x), bits_from<bit>(y));
  TileSums<unit> sums;
  for (int c = 0; c < unit; ++c) {
    const __m512i bytes = _mm512_add_epi8(first, all(0x03020100 * unit + 0x01010101 * c));
    sums.of[c] = _mm512_setzero_si512();
    for (int k = 0; k < taps; k += 2) {
      const __m512i picked[2] = {rows.row(bytes, k), rows.row(bytes, k + 1)};
      const __m512i upper = weigh_across<SampleType::bytes, taps>(source, weights, &picked[0]);
      const __m512i lower = weigh_across<SampleType::bytes, taps>(source, weights, &picked[1]);
      const __m512i both = _mm512_mask_blend_epi16(0xAAAAAAAA, upper, _mm512_slli_epi32(lower, 16));
      sums.of[c] = _mm512_dpwssd_epi32(sums.of[c], both, weights.down[k / 2]);
    }
  }
  return sums;
}

// Weights between two samples are 64ths both ways.
template <int taps, SampleOutput output>
BISEAM_STEP __m512i rounded(__m512i sum) {
  constexpr int shift = (taps == 2 ? 6 : kTapBits) + (output == SampleOutput::fine ? 0 : kFineBits - 8);
  return _mm512_srai_epi32(_mm512_add_epi32(sum, all(1 << (shift - 1))), shift);
}

// Parts of 128 bits are rows.
BISEAM_STEP void store_rows(__m512i rows, uint8_t* results, std::ptrdiff_t stride) {
  const auto to = [=](int i) { return reinterpret_cast<__m128i*>(results + i * stride); };
  _mm_storeu_si128(to(0), _mm512_castsi512_si128(rows));
  _mm_storeu_si128(to(1), _mm512_extracti32x4_epi32(rows, 1));
  _mm_storeu_si128(to(2), _mm512_extracti32x4_epi32(rows, 2));
  _mm_storeu_si128(to(3), _mm512_extracti32x4_epi32(rows, 3));
}

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

// What all tiles need to know of their job.  A copy: results are bytes, which might lie in the job as far as compilers know.
template <int taps, SampleOutput output>
struct TileKernel {
  SampleSource source;
  const int8_t* parts;
};

template <class Tile, SampleOutput output>
BISEAM_STEP void sample_windows(const TileKernel<Tile::kTaps, output>& kernel, const Vectors& x, const Vectors& y,
                                const Corners& corners, const SampleRows& at) {
  constexpr int unit = Tile::kUnit, taps = Tile::kTaps;
  const SampleSource& source = kernel.source;
  alignas(64) int32_t offsets[kSide * kTiles];
  _mm512_store_si512(offsets, _mm512_add_epi32(_mm512_mullo_epi32(corners.row, all(static_cast<int32_t>(source.stride))),
                                               _mm512_mullo_epi32(corners.column, all(unit))));
  Vectors from_left, from_top;
  for (int i = 0; i < kSide; ++i) {
    from_left.of[i] = _mm512_sub_epi32(x.of[i], _mm512_slli_epi32(corners.column, 16));
    from_top.of[i] = _mm512_sub_epi32(y.of[i], _mm512_slli_epi32(corners.row, 16));
  }
  const Vectors across = to_tiles(from_left), down = to_tiles(from_top);
  Vectors results[unit];
  for (int i = 0; i < kTiles; ++i) {
    const TileRows<Tile> rows(source.first + offsets[kSide * i], source.stride);
    TileSums<unit> sums;
    if constexpr (taps == 2) {
      sums = sum_two(rows, across.of[i], down.of[i]);
    } else {
      sums = sum_more(source, kernel.parts, rows, across.of[i], down.of[i]);
    }
    for (int c = 0; c < unit; ++c) results[c].of[i] = rounded<taps, output>(sums.of[c]);
  }
  if constexpr (unit == 1) {
    store_samples<output>(results[0], at.results, at.stride);
  } else {
    store_pairs<output>(results[0], results[1], at.results, at.stride);
  }
}

// Sixteen columns of four rows; false: not all of them lie in windows, nothing is done.
template <int unit, int taps, SampleOutput output>
BISEAM_STEP bool sample_tiles(const TileKernel<taps, output>& kernel, const SampleRows& at) {
  using Low = Tile<unit, taps, 9 - taps>;
  using High = Tile<unit, taps, 8>;
  const Vectors x = load_positions<taps>(at.x, at.pitch), y = load_positions<taps>(at.y, at.pitch);
  const Range across = range_of(x), down = range_of(y);
  const Corners low = corners_of<Low>(kernel.source, across, down);
  if (low.within) {
    sample_windows<Low>(kernel, x, y, low, at);
    return true;
  }
  if constexpr (taps == 2) return false;
  const Corners high = corners_of<High>(kernel.source, across, down);
  if (high.within) sample_windows<High>(kernel, x, y, high, at);
  return high.within;
}

// Otherwise: windows of another kind, which the fewest taps do without.
template <int taps>
BISEAM_STEP void sample_by_rows(const SampleJob& job, const SampleRows& at) {
  for (int j = 0; j < at.rows; ++j) {
    (taps == 2 ? sample_row_avx2 : sample_row_avx512)(job, at.x + j * at.pitch, at.y + j * at.pitch, at.results + j * at.stride,
                                                      at.columns);
  }
}

// As many columns and rows as there are, by repeating the last ones.
template <int unit, int taps, SampleOutput output>
BISEAM_AVX512 void sample_rest(const SampleJob& job, const TileKernel<taps, output>& kernel, const SampleRows& at) {
  int32_t x[kSide][kColumns], y[kSide][kColumns];
  uint8_t results[kSide][kColumns * output_bytes_of(SampleType::byte_pairs, SampleOutput::fine)];
  for (int j = 0; j < kSide; ++j) {
    for (int i = 0; i < kColumns; ++i) {
      const std::ptrdiff_t from = std::min(j, at.rows - 1) * at.pitch + std::min(i, at.columns - 1);
      x[j][i] = at.x[from];
      y[j][i] = at.y[from];
    }
  }
  if (sample_tiles<unit>(kernel, {x[0], y[0], kColumns, results[0], sizeof results[0], kColumns, kSide})) {
    const int bytes = at.columns * output_bytes_of(job.source.type, output);
    for (int j = 0; j < at.rows; ++j) std::memcpy(at.results + j * at.stride, results[j], static_cast<std::size_t>(bytes));
  } else {
    sample_by_rows<taps>(job, at);
  }
}

// Brings near what the tiles below will want, about: a block's rows lie one below the other.  There may be nothing; nothing is
// read.
template <int unit, int taps>
BISEAM_STEP void ask_for_tiles(const SampleSource& source, const SampleRows& at) {
  for (int i = 0; i < kTiles; ++i) {
    const std::ptrdiff_t middle = (kSide + 1) * at.pitch + kSide * i + 1;
    const std::ptrdiff_t offset = (at.y[middle] >> 16) * source.stride + std::ptrdiff_t{at.x[middle] >> 16} * unit;
    for (int k = 1 - taps; k <= 1 + taps; ++k) {
      const auto row = reinterpret_cast<uintptr_t>(source.first) + static_cast<uintptr_t>(offset + k * source.stride);
      _mm_prefetch(reinterpret_cast<const char*>(row), _MM_HINT_T0);
    }
  }
}

template <int unit, int taps, SampleOutput output>
BISEAM_AVX512 void sample_all(const SampleJob& job, const SampleRows& rows) {
  const TileKernel<taps, output> kernel{job.source, job.across->parts};
  constexpr int bytes = output_bytes_of(unit == 1 ? SampleType::bytes : SampleType::byte_pairs, output);
  for (int j = 0; j < rows.rows; j += kSide) {
    for (int i = 0; i < rows.columns; i += kColumns) {
      const std::ptrdiff_t from = j * rows.pitch + i;
      const SampleRows at{rows.x + from,
                          rows.y + from,
                          rows.pitch,
                          rows.results + j * rows.stride + i * bytes,
                          rows.stride,
                          std::min(kColumns, rows.columns - i),
                          std::min(kSide, rows.rows - j)};
      if (at.columns == kColumns && rows.rows + rows.below - j >= 2 * kSide) ask_for_tiles<unit, taps>(kernel.source, at);
      if (at.columns < kColumns || at.rows < kSide) {
        sample_rest<unit>(job, kernel, at);
      } else if (!sample_tiles<unit>(kernel, at)) {
        sample_by_rows<taps>(job, at);
      }
    }
  }
}

template <int unit, int taps>
BISEAM_STEP void sample_taps(const SampleJob& job, const SampleRows& rows) {
  if (job.output == SampleOutput::fine) {
    sample_all<unit, taps, SampleOutput::fine>(job, rows);
  } else {
    sample_all<unit, taps, SampleOutput::samples>(job, rows);
  }
}

template <int unit>
BISEAM_STEP void sample_unit(const SampleJob& job, const SampleRows& rows) {
  job.across->taps == 2 ? sample_taps<unit, 2>(job, rows) : sample_taps<unit, 4>(job, rows);
}

}  // namespace

bool are_tiles(const SampleJob& job) noexcept {
  constexpr int64_t most = INT32_MAX / 2;
  const int64_t stride = job.source.stride;
  return !is_words(job.source.type) && job.across == job.down &&
         (job.across->taps == 2 || (job.across->taps == 4 && job.across->phase_bits == 7)) && std::abs(stride) <= most &&
         std::abs(stride) * job.source.height <= most;
}

BISEAM_AVX512 void sample_tiles_avx512(const SampleJob& job, const SampleRows& rows) noexcept {
  is_pairs(job.source.type) ? sample_unit<2>(job, rows) : sample_unit<1>(job, rows);
}

}  // namespace biseam::ring

#endif
