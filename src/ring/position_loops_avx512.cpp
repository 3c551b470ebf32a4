#include "ring/position_loops.hpp"

#include "base/intrinsics.hpp"
#include "ring/positions.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>

// Compilers make vectors of whole stretches between two nodes only.  Here vectors go on across them, their lanes taking the
// coefficients of the stretches that they lie in.
namespace biseam::ring {

#define BISEAM_STEP [[gnu::always_inline]] BISEAM_AVX512 inline

namespace {

constexpr int kLanes = 16;
constexpr int kMostNodes = kLanes;  // in a row
constexpr int kMostStretches = kMostNodes - 3;

BISEAM_STEP __m512i all(int32_t value) { return _mm512_set1_epi32(value); }
BISEAM_STEP __m512i held(__m512i value, int32_t limit) {
  return _mm512_min_epi32(_mm512_max_epi32(value, all(-limit)), all(limit));
}

// What all steps need to know of a window.
struct Units {
  __m128i bits, wrapped_bits;
  __m512i half;

  BISEAM_STEP explicit Units(const NodeWindow& w)
      : bits(_mm_cvtsi32_si128(w.bits)), wrapped_bits(_mm_cvtsi32_si128(w.wrapped_bits)), half(all((1 << w.bits) >> 1)) {}

  // From one value to another, as near as they can be.
  BISEAM_STEP __m512i rise(__m512i from, __m512i to) const {
    return _mm512_sra_epi32(_mm512_sll_epi32(_mm512_sub_epi32(to, from), wrapped_bits), wrapped_bits);
  }
};

struct Cubics {
  __m512i a, b, c, d;
};

// Rounded towards 0.
BISEAM_STEP __m512i sixth(__m512i value) {
  const __m512i factor = all(0x2AAAAAAB);
  const __m512i even = _mm512_srli_epi64(_mm512_mul_epi32(value, factor), 32);
  const __m512i odd = _mm512_mul_epi32(_mm512_srli_epi64(value, 32), factor);
  return _mm512_sub_epi32(_mm512_mask_blend_epi32(0xAAAA, even, odd), _mm512_srai_epi32(value, 31));
}

BISEAM_STEP Cubics cubics_through(const Units& units, const __m512i* nodes) {
  const __m512i before = units.rise(nodes[1], nodes[0]), second = units.rise(nodes[1], nodes[2]);
  const __m512i after = units.rise(nodes[1], nodes[3]);
  const __m512i thrice = _mm512_add_epi32(second, _mm512_slli_epi32(second, 1));
  const __m512i third = _mm512_sub_epi32(_mm512_sub_epi32(after, before), thrice), bend = _mm512_add_epi32(before, second);
  const __m512i d = held(sixth(third), 1 << 22);
  const __m512i c = held(_mm512_add_epi32(_mm512_srai_epi32(bend, 1), _mm512_and_si512(bend, all(1))), 1 << 22);
  const __m512i b = held(_mm512_sub_epi32(_mm512_sub_epi32(second, c), d), 1 << 24);
  return {nodes[1], _mm512_add_epi32(_mm512_sll_epi32(b, units.bits), units.half),
          _mm512_add_epi32(_mm512_sll_epi32(c, units.bits), units.half), d};
}

BISEAM_STEP __m512i values_at(const Units& units, const Cubics& v, __m512i place) {
  const __m512i bend = _mm512_sra_epi32(_mm512_add_epi32(_mm512_mullo_epi32(v.d, place), v.c), units.bits);
  const __m512i slope = _mm512_sra_epi32(_mm512_add_epi32(_mm512_mullo_epi32(bend, place), v.b), units.bits);
  return _mm512_add_epi32(v.a, _mm512_sra_epi32(_mm512_add_epi32(_mm512_mullo_epi32(slope, place), units.half), units.bits));
}

// Sixteen samples of a run: where each lies in its stretch between two nodes, and which of them lie in the first stretch, the
// second and so on.
struct RunVector {
  __m512i place;
  int first, stretches;
  __mmask16 within[kMostStretches];
};

// Lanes past the run's end repeat its last sample.
BISEAM_STEP void divide_run(const SampleRun& run, int bits, RunVector* vectors) {
  const __m512i lane = _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  for (int i = 0; i < run.count; i += kLanes) {
    RunVector& vector = vectors[i / kLanes];
    const __m512i index = _mm512_min_epi32(_mm512_add_epi32(lane, all(i)), all(run.count - 1));
    const __m512i position = _mm512_add_epi32(_mm512_mullo_epi32(index, all(run.step)), all(run.start));
    const __m512i stretch = _mm512_sra_epi32(position, _mm_cvtsi32_si128(bits));
    const int last = std::min(i + kLanes, run.count) - 1;
    vector.place = _mm512_and_si512(position, all((1 << bits) - 1));
    vector.first = (run.start + i * run.step) >> bits;
    vector.stretches = ((run.start + last * run.step) >> bits) - vector.first + 1;
    for (int k = 0; k < vector.stretches; ++k) vector.within[k] = _mm512_cmpeq_epi32_mask(stretch, all(vector.first + k));
  }
}

// Coefficients of cubics one beside the other.
template <int count>
struct CubicRow {
  alignas(64) int32_t a[count], b[count], c[count], d[count];

  BISEAM_STEP void store(int at, const Cubics& v) {
    _mm512_store_si512(a + at, v.a);
    _mm512_store_si512(b + at, v.b);
    _mm512_store_si512(c + at, v.c);
    _mm512_store_si512(d + at, v.d);
  }

  BISEAM_STEP Cubics all_of(int at) const { return {all(a[at]), all(b[at]), all(c[at]), all(d[at])}; }

  // Into some lanes.
  BISEAM_STEP void put(int at, __mmask16 lanes, Cubics& v) const {
    v.a = _mm512_mask_set1_epi32(v.a, lanes, a[at]);
    v.b = _mm512_mask_set1_epi32(v.b, lanes, b[at]);
    v.c = _mm512_mask_set1_epi32(v.c, lanes, c[at]);
    v.d = _mm512_mask_set1_epi32(v.d, lanes, d[at]);
  }
};

// Of a run's lanes, each by the cubic of its stretch: number index of each row of them.
template <int count>
BISEAM_STEP Cubics cubics_of(const RunVector& vector, int stretches, const CubicRow<count>* rows, int index) {
  Cubics v = rows[vector.first].all_of(index);
  for (int k = 1; k < stretches; ++k) rows[vector.first + k].put(index, vector.within[k], v);
  return v;
}

// A row of nodes.  Past the last one nothing is read.
BISEAM_STEP __m512i load_nodes(const NodeWindow& w, int row, __mmask16 columns) {
  const __m512i nodes = _mm512_maskz_loadu_epi32(columns, w.nodes + row * w.stride);
  return _mm512_sra_epi32(_mm512_sub_epi32(nodes, all(w.offset - w.halvings)), _mm_cvtsi32_si128(w.halvings));
}

using NodeColumns = int32_t[kMostNodes][kBlockHeight];

// The values of each column of nodes at the rows of samples.
BISEAM_STEP void fill_columns(const NodeWindow& w, const Units& units, int nodes, NodeColumns& columns) {
  const __mmask16 within = static_cast<__mmask16>((1u << nodes) - 1);
  const int stretches = ((w.down.start + (w.down.count - 1) * w.down.step) >> w.bits) + 1;
  CubicRow<kMostNodes> cubics[kMostStretches];
  __m512i four[4] = {{}, load_nodes(w, 0, within), load_nodes(w, 1, within), load_nodes(w, 2, within)};
  for (int j = 0; j < stretches; ++j) {
    four[0] = four[1];
    four[1] = four[2];
    four[2] = four[3];
    four[3] = load_nodes(w, j + 3, within);
    cubics[j].store(0, cubics_through(units, four));
  }
  RunVector vectors[kBlockHeight / kLanes];
  divide_run(w.down, w.bits, vectors);
  for (int y = 0; y < w.down.count; y += kLanes) {
    const RunVector& vector = vectors[y / kLanes];
    for (int i = 0; i < nodes; ++i) {
      _mm512_store_si512(columns[i] + y, values_at(units, cubics_of(vector, vector.stretches, cubics, i), vector.place));
    }
  }
}

// The same lanes of all rows.  stretches: 0 if they aren't known.
template <int stretches>
BISEAM_STEP void fill_vectors(const NodeWindow& w, const Units& units, const RunVector& vector,
                              const CubicRow<kBlockHeight>* cubics, int32_t* out) {
  const RunVector v = vector;
  for (int y = 0; y < w.down.count; ++y) {
    const Cubics row = cubics_of(v, stretches == 0 ? v.stretches : stretches, cubics, y);
    _mm512_storeu_si512(out + y * kBlockWidth, values_at(units, row, v.place));
  }
}

BISEAM_STEP void fill_rest(const NodeWindow& w, const Units& units, const RunVector& vector,
                           const CubicRow<kBlockHeight>* cubics, __mmask16 lanes, int32_t* out) {
  for (int y = 0; y < w.down.count; ++y) {
    const Cubics row = cubics_of(vector, vector.stretches, cubics, y);
    _mm512_mask_storeu_epi32(out + y * kBlockWidth, lanes, values_at(units, row, vector.place));
  }
}

BISEAM_STEP void fill_rows(const NodeWindow& w, const Units& units, int stretches, const NodeColumns& columns, int32_t* out) {
  CubicRow<kBlockHeight> cubics[kMostStretches];
  for (int y = 0; y < w.down.count; y += kLanes) {
    __m512i four[4] = {
        {}, _mm512_load_si512(columns[0] + y), _mm512_load_si512(columns[1] + y), _mm512_load_si512(columns[2] + y)};
    for (int i = 0; i < stretches; ++i) {
      four[0] = four[1];
      four[1] = four[2];
      four[2] = four[3];
      four[3] = _mm512_load_si512(columns[i + 3] + y);
      cubics[i].store(y, cubics_through(units, four));
    }
  }
  RunVector vectors[kBlockWidth / kLanes];
  divide_run(w.across, w.bits, vectors);
  for (int x = 0; x < w.across.count; x += kLanes) {
    const RunVector& vector = vectors[x / kLanes];
    const int left = w.across.count - x;
    if (left < kLanes) {
      fill_rest(w, units, vector, cubics, static_cast<__mmask16>((1u << left) - 1), out + x);
    } else if (vector.stretches == 1) {
      fill_vectors<1>(w, units, vector, cubics, out + x);
    } else if (vector.stretches == 2) {
      fill_vectors<2>(w, units, vector, cubics, out + x);
    } else {
      fill_vectors<0>(w, units, vector, cubics, out + x);
    }
  }
}

}  // namespace

BISEAM_AVX512 void interpolate_nodes_avx512(const NodeWindow& window, int32_t* out) noexcept {
  const NodeWindow w = window;
  const int across = ((w.across.start + (w.across.count - 1) * w.across.step) >> w.bits) + 1;
  const int down = ((w.down.start + (w.down.count - 1) * w.down.step) >> w.bits) + 1;
  if (std::max(across, down) > kMostStretches) return kInterpolateNodes.avx2(w, out);
  const Units units(w);
  alignas(64) NodeColumns columns;
  fill_columns(w, units, across + 3, columns);
  fill_rows(w, units, across, columns, out);
}

}  // namespace biseam::ring

#endif
