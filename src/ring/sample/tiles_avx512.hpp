// Tiles of four by four positions: however rows of the panorama are turned in the picture, what a tile needs lies in a window
// of some rows of 8 or 16 samples.  These are loaded whole, and the taps are taken out of registers.  A lane of 32 bits
// is a sample, or a component of a pair.
#pragma once

#include "base/intrinsics.hpp"
#include "ring/sample/sample_row_kernels.hpp"
#include "ring/sample/weights_avx512.hpp"
#include "ring/sample/windows_avx512.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <cstring>

namespace biseam::ring {

// Four tiles side by side are worked on together: their positions come from memory row by row.
constexpr int kSide = 4, kTiles = 4, kTileColumns = kSide * kTiles;

// unit: bytes of a column in the picture.  columns: of the window.  places: rows of it that a first tap may lie in, at most 8.
template <int unit_, int columns_, int taps_, int places_>
struct TileWindow {
  static constexpr int kUnit = unit_, kColumns = columns_, kTaps = taps_, kPlaces = places_;
  static constexpr int kRows = kPlaces + kTaps - 1, kColumnPlaces = kColumns - kTaps + 1;
  static constexpr bool kOne = kRows <= 8;  // everything lies in one pair of vectors
};

// So many that a window has eight rows.
template <int taps>
constexpr int kLowPlaces = 9 - taps;

// Windows in the order in which they are tried.
template <class... Windows>
struct TileWindows {};

struct Vectors {
  __m512i of[kTiles];
};

BISEAM_STEP Vectors load_tile_positions(const int32_t* positions, std::ptrdiff_t pitch) {
  Vectors rows;
  for (int i = 0; i < kSide; ++i) rows.of[i] = _mm512_loadu_si512(positions + i * pitch);
  return rows;
}

// From a position to its first tap's, rounded to phases once what lies below them is left out.
template <int taps>
constexpr int kToFirst = Phases<taps>::kHalf - (Phases<taps>::kBefore << 16);

// Four lanes of each of the four rows instead of a row: the tiles.
BISEAM_STEP Vectors to_tiles(const Vectors& rows) {
  const __m512i a = _mm512_shuffle_i32x4(rows.of[0], rows.of[1], 0x44), b = _mm512_shuffle_i32x4(rows.of[2], rows.of[3], 0x44);
  const __m512i c = _mm512_shuffle_i32x4(rows.of[0], rows.of[1], 0xee), d = _mm512_shuffle_i32x4(rows.of[2], rows.of[3], 0xee);
  return {{_mm512_shuffle_i32x4(a, b, 0x88), _mm512_shuffle_i32x4(a, b, 0xdd), _mm512_shuffle_i32x4(c, d, 0x88),
           _mm512_shuffle_i32x4(c, d, 0xdd)}};
}

// Of the first taps of each tile's four corners the least, four times.  Where positions bend within a tile others may be less.
template <int taps>
BISEAM_STEP __m512i least_of_corners(const Vectors& rows) {
  const __m512i ends = _mm512_min_epi32(rows.of[0], rows.of[kSide - 1]);
  const __m512i least = _mm512_min_epi32(_mm512_shuffle_epi32(ends, _MM_PERM_AAAA), _mm512_shuffle_epi32(ends, _MM_PERM_DDDD));
  return _mm512_srai_epi32(_mm512_add_epi32(least, all(kToFirst<taps>)), 16);
}

// Unsigned: what lies left of a window or above it is larger than all that lies within.
BISEAM_STEP __m512i largest_of(const Vectors& rows) {
  return _mm512_max_epu32(_mm512_max_epu32(rows.of[0], rows.of[1]), _mm512_max_epu32(rows.of[2], rows.of[3]));
}

// The same 8 bits of both lanes of 64, from a bit on, in each of their bytes.
template <int bit>
BISEAM_STEP __m512i bits_from(__m512i lanes) {
  return _mm512_multishift_epi64_epi8(_mm512_set1_epi64(0x2020202000000000 + 0x0101010101010101 * bit), lanes);
}

// Four tiles in their windows.
struct PlacedTiles {
  alignas(64) int32_t offsets[kSide * kTiles];  // bytes from the picture's first to the windows', four times
  Vectors across, down;                         // positions from the windows' corners
};

template <int taps>
BISEAM_STEP Vectors first_taps_from(__m512i sample, const Vectors& positions) {
  const __m512i less = _mm512_sub_epi32(_mm512_slli_epi32(sample, 16), all(kToFirst<taps>));
  Vectors from;
  for (int i = 0; i < kSide; ++i) from.of[i] = _mm512_sub_epi32(positions.of[i], less);
  return from;
}

// By windows that begin with samples left and top, or are moved inside the picture.  False: not all taps lie in them.
template <class Window>
BISEAM_STEP bool place_tiles(const SampleSource& source, const Vectors& x, const Vectors& y, __m512i left, __m512i top,
                             PlacedTiles& placed) {
  const __m512i column = _mm512_min_epi32(left, all(source.width - Window::kColumns));
  const __m512i row = _mm512_min_epi32(top, all(source.height - Window::kRows));
  const Vectors from_left = first_taps_from<Window::kTaps>(column, x), from_top = first_taps_from<Window::kTaps>(row, y);
  const __mmask16 inside = _mm512_cmpge_epi32_mask(_mm512_or_si512(column, row), _mm512_setzero_si512());
  const __mmask16 narrow = _mm512_mask_cmplt_epu32_mask(inside, largest_of(from_left), all(Window::kColumnPlaces << 16));
  const __mmask16 low = _mm512_mask_cmplt_epu32_mask(narrow, largest_of(from_top), all(Window::kPlaces << 16));
  if (low != 0xFFFF) return false;
  _mm512_store_si512(placed.offsets, _mm512_add_epi32(_mm512_mullo_epi32(row, all(static_cast<int32_t>(source.stride))),
                                                      _mm512_mullo_epi32(column, all(Window::kUnit))));
  placed.across = to_tiles(from_left);
  placed.down = to_tiles(from_top);
  return true;
}

// Two rows of 32 bytes, or one.
template <bool two>
BISEAM_STEP __m512i load_two(const uint8_t* window, std::ptrdiff_t stride) {
  return two ? load_2x32(window, stride) : _mm512_castsi256_si512(load_32(window));
}

// A window's rows of each component.  Taps of rows k to k + 3 lie in rows[k], of rows k + 4 to k + 7 in rows[k + 4]; where
// everything lies in one pair of vectors, that is rows[0] and rows[4].  Loader: load<n>(window, stride, of) gives n rows, up to
// four, of 16 bytes of each component.
template <class Window, int components, class Loader>
struct TileRows {
  static constexpr int kCount = Window::kOne ? 5 : Window::kTaps + 4;
  Fours<kCount> of[components];

  BISEAM_STEP TileRows(const uint8_t* window, std::ptrdiff_t stride, const Loader& loader) {
    using Loads = FourLoads<kCount>;
    __m512i loaded[Loads::kWhole][components];
    for (int k = 0; k < Loads::kLast / 4; ++k) loader.template load<4>(window + 4 * k * stride, stride, loaded[k]);
    loader.template load<Loads::kLeft>(window + Loads::kLast * stride, stride, loaded[Loads::kLast / 4]);
    for (int c = 0; c < components; ++c) {
      __m512i whole[Loads::kWhole];
      for (int k = 0; k < Loads::kWhole; ++k) whole[k] = loaded[k][c];
      of[c] = fours_of<kCount>(whole);
    }
  }
};

// Parts of 128 bits are rows.
BISEAM_STEP void store_rows(__m512i rows, uint8_t* results, std::ptrdiff_t stride) {
  const auto to = [=](int i) { return reinterpret_cast<__m128i*>(results + i * stride); };
  _mm_storeu_si128(to(0), _mm512_castsi512_si128(rows));
  _mm_storeu_si128(to(1), _mm512_extracti32x4_epi32(rows, 1));
  _mm_storeu_si128(to(2), _mm512_extracti32x4_epi32(rows, 2));
  _mm_storeu_si128(to(3), _mm512_extracti32x4_epi32(rows, 3));
}

// What follows is the same for all kernels of tiles.  Such a one has
//   kUnit, kTaps, kBytes: bytes of a column in the picture, taps, bytes of a result;
//   source: of the samples.  A copy: results are bytes, which might lie in the job as far as compilers know;
//   Windows, and sample_windows<Window>(placed, at): does four tiles that lie in such windows;
//   kOtherwise: what does tiles that lie in none, row by row.

template <class Kernel, class... Windows>
BISEAM_STEP bool sample_in(TileWindows<Windows...>, const Kernel& kernel, const SampleRows& at) {
  constexpr int taps = Kernel::kTaps;
  const Vectors x = load_tile_positions(at.x, at.pitch), y = load_tile_positions(at.y, at.pitch);
  const __m512i left = least_of_corners<taps>(x), top = least_of_corners<taps>(y);
  PlacedTiles placed;
  return ((place_tiles<Windows>(kernel.source, x, y, left, top, placed) &&
           (kernel.template sample_windows<Windows>(placed, at), true)) ||
          ...);
}

// Sixteen columns of four rows; false: not all of them lie in windows, nothing is done.
template <class Kernel>
BISEAM_STEP bool sample_tiles(const Kernel& kernel, const SampleRows& at) {
  return sample_in(typename Kernel::Windows{}, kernel, at);
}

template <class Kernel>
BISEAM_STEP void sample_by_rows(const SampleJob& job, const SampleRows& at) {
  for (int j = 0; j < at.rows; ++j) {
    Kernel::kOtherwise(job, at.x + j * at.pitch, at.y + j * at.pitch, at.results + j * at.stride, at.columns);
  }
}

// As many columns and rows as there are, by repeating the last ones.
template <class Kernel>
BISEAM_AVX512 void sample_rest_of_tiles(const SampleJob& job, const Kernel& kernel, const SampleRows& at) {
  int32_t x[kSide][kTileColumns], y[kSide][kTileColumns];
  uint8_t results[kSide][kTileColumns * Kernel::kBytes];
  for (int j = 0; j < kSide; ++j) {
    for (int i = 0; i < kTileColumns; ++i) {
      const std::ptrdiff_t from = std::min(j, at.rows - 1) * at.pitch + std::min(i, at.columns - 1);
      x[j][i] = at.x[from];
      y[j][i] = at.y[from];
    }
  }
  if (sample_tiles(kernel, {x[0], y[0], kTileColumns, results[0], sizeof results[0], kTileColumns, kSide})) {
    const auto bytes = static_cast<std::size_t>(at.columns * Kernel::kBytes);
    for (int j = 0; j < at.rows; ++j) std::memcpy(at.results + j * at.stride, results[j], bytes);
  } else {
    sample_by_rows<Kernel>(job, at);
  }
}

template <class Kernel>
BISEAM_AVX512 void sample_all_tiles(const SampleJob& job, const SampleRows& rows) {
  const Kernel kernel(job);
  for (int j = 0; j < rows.rows; j += kSide) {
    for (int i = 0; i < rows.columns; i += kTileColumns) {
      const std::ptrdiff_t from = j * rows.pitch + i;
      const SampleRows at{rows.x + from,
                          rows.y + from,
                          rows.pitch,
                          rows.results + j * rows.stride + i * Kernel::kBytes,
                          rows.stride,
                          std::min(kTileColumns, rows.columns - i),
                          std::min(kSide, rows.rows - j)};
      if (at.columns < kTileColumns || at.rows < kSide) {
        sample_rest_of_tiles(job, kernel, at);
      } else if (!sample_tiles(kernel, at)) {
        sample_by_rows<Kernel>(job, at);
      }
    }
  }
}

}  // namespace biseam::ring

#endif
