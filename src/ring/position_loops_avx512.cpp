#include "ring/position_loops.hpp"

#include "base/intrinsics.hpp"
#include "ring/positions.hpp"

#if defined(BISEAM_X86_64)

#include <algorithm>
#include <type_traits>

// Compilers make vectors of whole stretches between two nodes only.  Here vectors go on across them, their lanes taking the
// coefficients of the stretches that they lie in.
namespace biseam::ring {

#define BISEAM_STEP BISEAM_INLINED BISEAM_AVX512

namespace {

constexpr int kLanes = 16;
constexpr int kMostNodes = kLanes, kFewNodes = kLanes / 2;  // in a row
constexpr int kMostStretches = kMostNodes - kNodesAround;

BISEAM_STEP __m512i all(int32_t value) { return _mm512_set1_epi32(value); }
BISEAM_STEP __m512i held(__m512i value, int32_t limit) {
  return _mm512_min_epi32(_mm512_max_epi32(value, all(-limit)), all(limit));
}

// What all steps need to know of a window.
struct Units {
  __m512i bits, half;

  BISEAM_STEP explicit Units(const NodeWindow& w) : bits(all(w.bits)), half(all((1 << w.bits) >> 1)) {}
};

struct Cubics {
  __m512i a, b, c, d;
};

BISEAM_STEP __m512i sum(__m512i a, __m512i b) { return _mm512_add_epi32(a, b); }
BISEAM_STEP __m512i difference(__m512i a, __m512i b) { return _mm512_sub_epi32(a, b); }

// Rounded towards 0.
BISEAM_STEP __m512i sixth(__m512i value) {
  const __m512i factor = all(0x2AAAAAAB);
  const __m512i even = _mm512_srli_epi64(_mm512_mul_epi32(value, factor), 32);
  const __m512i odd = _mm512_mul_epi32(_mm512_srli_epi64(value, 32), factor);
  return difference(_mm512_mask_blend_epi32(0xAAAA, even, odd), _mm512_srai_epi32(value, 31));
}

struct NoWraps {};

// Cubics between nodes of one direction, as they come one after the other.  Wraps: the bits by which values wrap around, if
// they do.
template <class Wraps>
class CubicChain {
 public:
  BISEAM_STEP CubicChain(const Units& units, Wraps wraps) : units_(units), wraps_(wraps) {}

  // The first five nodes.
  BISEAM_STEP void begin(const __m512i (&nodes)[kNodesAround]) {
    for (int k = 0; k < kNodesAround; ++k) nodes_[k + 1] = nodes[k];
    slope_ = slope_at(nodes_ + 1);
  }

  BISEAM_STEP Cubics next(__m512i node) {
    for (int k = 0; k < kNodesAround; ++k) nodes_[k] = nodes_[k + 1];
    nodes_[kNodesAround] = node;
    const __m512i slope = slope_, second = rise(nodes_[2], nodes_[3]);
    slope_ = slope_at(nodes_ + 1);
    const __m512i both = sum(slope, slope_), twice = sum(second, second);
    const __m512i d = held(difference(both, twice), 1 << 22);
    const __m512i c = held(difference(sum(twice, second), sum(both, slope)), 1 << 22);
    const __m512i b = held(difference(difference(second, c), d), 1 << 24);
    return {nodes_[2], sum(_mm512_sllv_epi32(b, units_.bits), units_.half), sum(_mm512_sllv_epi32(c, units_.bits), units_.half),
            d};
  }

 private:
  // From one value to another, as near as they can be.
  BISEAM_STEP __m512i rise(__m512i from, __m512i to) const {
    const __m512i apart = difference(to, from);
    if constexpr (std::is_empty_v<Wraps>) {
      return apart;
    } else {
      return _mm512_srav_epi32(_mm512_sllv_epi32(apart, wraps_), wraps_);
    }
  }

  BISEAM_STEP __m512i slope_at(const __m512i* nodes) const {
    const __m512i inner = difference(rise(nodes[2], nodes[3]), rise(nodes[2], nodes[1]));
    const __m512i outer = difference(rise(nodes[2], nodes[4]), rise(nodes[2], nodes[0]));
    return _mm512_srai_epi32(sum(sixth(difference(_mm512_slli_epi32(inner, 3), outer)), all(1)), 1);
  }

  const Units& units_;
  Wraps wraps_;
  __m512i nodes_[kCubicNodes], slope_;
};

BISEAM_STEP __m512i values_at(const Units& units, const Cubics& v, __m512i place) {
  const __m512i bend = _mm512_srav_epi32(_mm512_add_epi32(_mm512_mullo_epi32(v.d, place), v.c), units.bits);
  const __m512i slope = _mm512_srav_epi32(_mm512_add_epi32(_mm512_mullo_epi32(bend, place), v.b), units.bits);
  return _mm512_add_epi32(v.a, _mm512_srav_epi32(_mm512_add_epi32(_mm512_mullo_epi32(slope, place), units.half), units.bits));
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

// The lower halves of two vectors.
BISEAM_STEP __m512i halves(__m512i low, __m512i high) { return _mm512_inserti64x4(low, _mm512_castsi512_si256(high), 1); }

// Nodes of a row side by side: of one coordinate, or few of both, each in its half of the lanes.  Past the last one nothing is
// read.
template <int coordinates>
struct NodeRow {
  const int32_t* nodes[coordinates];
  std::ptrdiff_t stride;
  __mmask16 columns;
  __m512i offset, halvings, wrapped_bits;

  BISEAM_STEP NodeRow(const NodeWindow& w, const NodeValues* of, int count)
      : stride(w.stride), columns(static_cast<__mmask16>((1u << count) - 1)) {
    for (int k = 0; k < coordinates; ++k) nodes[k] = of[k].first;
    const NodeValues &low = of[0], &high = of[coordinates - 1];
    offset = sides(all(low.offset - low.halvings), all(high.offset - high.halvings));
    halvings = sides(all(low.halvings), all(high.halvings));
    wrapped_bits = sides(all(low.wrapped_bits), all(high.wrapped_bits));
  }

  BISEAM_STEP static __m512i sides(__m512i low, __m512i high) { return coordinates == 1 ? low : halves(low, high); }

  BISEAM_STEP __m512i load(int row) const {
    const __m512i low = _mm512_maskz_loadu_epi32(columns, nodes[0] + row * stride);
    const __m512i high = coordinates == 1 ? low : _mm512_maskz_loadu_epi32(columns, nodes[coordinates - 1] + row * stride);
    return _mm512_srav_epi32(_mm512_sub_epi32(sides(low, high), offset), halvings);
  }
};

using NodeColumns = int32_t[kMostNodes][kBlockHeight];

// The values of each column of nodes at the rows of samples.
template <int coordinates>
BISEAM_STEP void fill_columns(const NodeWindow& w, const Units& units, const NodeValues* values, int nodes,
                              const RunVector* down, NodeColumns* columns) {
  const NodeRow<coordinates> row(w, values, nodes);
  const int stretches = ((w.down.start + (w.down.count - 1) * w.down.step) >> w.bits) + 1;
  CubicRow<kMostNodes> cubics[kMostStretches];
  __m512i first[kNodesAround];
  for (int k = 0; k < kNodesAround; ++k) first[k] = row.load(k);
  CubicChain chain(units, row.wrapped_bits);
  chain.begin(first);
  for (int j = 0; j < stretches; ++j) cubics[j].store(0, chain.next(row.load(j + kNodesAround)));
  for (int y = 0; y < w.down.count; y += kLanes) {
    const RunVector& vector = down[y / kLanes];
    for (int k = 0; k < coordinates; ++k) {
      for (int i = 0; i < nodes; ++i) {
        const Cubics column = cubics_of(vector, vector.stretches, cubics, kFewNodes * k + i);
        _mm512_store_si512(columns[k][i] + y, values_at(units, column, vector.place));
      }
    }
  }
}

// All rows of so many whole vectors, each of which has lanes in so many stretches.
template <int vectors, int stretches>
BISEAM_STEP void fill_vectors(const NodeWindow& w, const Units& units, const RunVector* across,
                              const CubicRow<kBlockHeight>* cubics, int32_t* out) {
  for (int y = 0; y < w.down.count; ++y) {
    for (int i = 0; i < vectors; ++i) {
      const Cubics row = cubics_of(across[i], stretches, cubics, y);
      _mm512_storeu_si512(out + y * kBlockWidth + i * kLanes, values_at(units, row, across[i].place));
    }
  }
}

// Any vector.
BISEAM_STEP void fill_vector(const NodeWindow& w, const Units& units, const RunVector& vector,
                             const CubicRow<kBlockHeight>* cubics, __mmask16 lanes, int32_t* out) {
  for (int y = 0; y < w.down.count; ++y) {
    const Cubics row = cubics_of(vector, vector.stretches, cubics, y);
    _mm512_mask_storeu_epi32(out + y * kBlockWidth, lanes, values_at(units, row, vector.place));
  }
}

template <class Wraps>
BISEAM_STEP void fill_rows(const NodeWindow& w, const Units& units, Wraps wraps, int stretches, const RunVector* across,
                           const NodeColumns& columns, int32_t* out) {
  CubicRow<kBlockHeight> cubics[kMostStretches];
  for (int y = 0; y < w.down.count; y += kLanes) {
    __m512i first[kNodesAround];
    for (int k = 0; k < kNodesAround; ++k) first[k] = _mm512_load_si512(columns[k] + y);
    CubicChain chain(units, wraps);
    chain.begin(first);
    for (int i = 0; i < stretches; ++i) cubics[i].store(y, chain.next(_mm512_load_si512(columns[i + kNodesAround] + y)));
  }
  const int count = w.across.count, vectors = (count + kLanes - 1) / kLanes;
  const int each = across[0].stretches;
  bool alike = count % kLanes == 0;
  for (int i = 1; i < vectors; ++i) alike = alike && across[i].stretches == each;
  // Whole blocks of luma, and of chroma.
  if (alike && vectors == 4 && each == 1) return fill_vectors<4, 1>(w, units, across, cubics, out);
  if (alike && vectors == 2 && each == 1) return fill_vectors<2, 1>(w, units, across, cubics, out);
  if (alike && vectors == 2 && each == 2) return fill_vectors<2, 2>(w, units, across, cubics, out);
  for (int i = 0; i < vectors; ++i) {
    const int lanes = std::min(kLanes, count - i * kLanes);
    fill_vector(w, units, across[i], cubics, static_cast<__mmask16>((1u << lanes) - 1), out + i * kLanes);
  }
}

}  // namespace

BISEAM_AVX512 void interpolate_nodes_avx512(const NodeWindow& window, int32_t* const out[2]) noexcept {
  const NodeWindow& w = window;
  const int across = ((w.across.start + (w.across.count - 1) * w.across.step) >> w.bits) + 1;
  const int down = ((w.down.start + (w.down.count - 1) * w.down.step) >> w.bits) + 1;
  if (std::max(across, down) > kMostStretches) return kInterpolateNodes.avx2(w, out);
  const Units units(w);
  RunVector runs_down[kBlockHeight / kLanes], runs_across[kBlockWidth / kLanes];
  divide_run(w.down, w.bits, runs_down);
  divide_run(w.across, w.bits, runs_across);
  alignas(64) NodeColumns columns[2];
  const int nodes = across + kNodesAround;
  if (nodes <= kFewNodes) {
    fill_columns<2>(w, units, w.values, nodes, runs_down, columns);
  } else {
    for (int k = 0; k < 2; ++k) fill_columns<1>(w, units, w.values + k, nodes, runs_down, columns + k);
  }
  for (int k = 0; k < 2; ++k) {
    if (w.values[k].wrapped_bits == 0) {
      fill_rows(w, units, NoWraps{}, across, runs_across, columns[k], out[k]);
    } else {
      fill_rows(w, units, all(w.values[k].wrapped_bits), across, runs_across, columns[k], out[k]);
    }
  }
}

}  // namespace biseam::ring

#endif
