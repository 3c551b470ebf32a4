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
BISEAM_STEP __m512i sum(__m512i a, __m512i b) { return _mm512_add_epi32(a, b); }
BISEAM_STEP __m512i difference(__m512i a, __m512i b) { return _mm512_sub_epi32(a, b); }
BISEAM_STEP __m512i held(__m512i value, int32_t limit) {
  return _mm512_min_epi32(_mm512_max_epi32(value, all(-limit)), all(limit));
}

struct Cubics {
  __m512i a, b, c, d;
};

// Rounded towards 0.
BISEAM_STEP __m512i sixth(__m512i value) {
  const __m512i factor = all(0x2AAAAAAB);
  const __m512i even = _mm512_srli_epi64(_mm512_mul_epi32(value, factor), 32);
  const __m512i odd = _mm512_mul_epi32(_mm512_srli_epi64(value, 32), factor);
  return difference(_mm512_mask_blend_epi32(0xAAAA, even, odd), _mm512_srai_epi32(value, 31));
}

struct NoWraps {};

// From one value to another, as near as they can be.  Wraps: the bits by which values wrap around, if they do.
template <class Wraps>
BISEAM_STEP __m512i rise(__m512i from, __m512i to, Wraps wraps) {
  const __m512i apart = difference(to, from);
  if constexpr (std::is_empty_v<Wraps>) {
    return apart;
  } else {
    return _mm512_srav_epi32(_mm512_sllv_epi32(apart, wraps), wraps);
  }
}

// At the third of five nodes.
template <class Wraps>
BISEAM_STEP __m512i slope_at(const __m512i* nodes, Wraps wraps) {
  const __m512i inner = difference(rise(nodes[2], nodes[3], wraps), rise(nodes[2], nodes[1], wraps));
  const __m512i outer = difference(rise(nodes[2], nodes[4], wraps), rise(nodes[2], nodes[0], wraps));
  return _mm512_srai_epi32(sum(sixth(difference(_mm512_slli_epi32(inner, 3), outer)), all(1)), 1);
}

// From a node to the next one, which is so much more, by the slopes at both.
BISEAM_STEP Cubics cubic_between(__m512i node, __m512i more, __m512i slope, __m512i next_slope) {
  const __m512i both = sum(slope, next_slope), twice = sum(more, more);
  const __m512i d = held(difference(both, twice), 1 << 22);
  const __m512i c = held(difference(sum(twice, more), sum(both, slope)), 1 << 22);
  const __m512i b = held(difference(difference(more, c), d), 1 << 24);
  return {node, b, c, d};
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

// Cubics side by side, as values are found by them: B and C times 2^bits, with the half that rounds the product added to them.
struct CubicRow {
  alignas(64) int32_t a[kLanes], b[kLanes], c[kLanes], d[kLanes];

  BISEAM_STEP CubicRow(const Cubics& v, int bits) {
    const __m128i by = _mm_cvtsi32_si128(bits);
    const __m512i half = all((1 << bits) >> 1);
    _mm512_store_si512(a, v.a);
    _mm512_store_si512(b, sum(_mm512_sll_epi32(v.b, by), half));
    _mm512_store_si512(c, sum(_mm512_sll_epi32(v.c, by), half));
    _mm512_store_si512(d, v.d);
  }

  // Of a run's lanes, each by the cubic of its stretch, the run's first being at some place.
  BISEAM_STEP Cubics of(const RunVector& vector, int first) const {
    const int at = first + vector.first;
    Cubics v = {all(a[at]), all(b[at]), all(c[at]), all(d[at])};
    for (int k = 1; k < vector.stretches; ++k) {
      v.a = _mm512_mask_set1_epi32(v.a, vector.within[k], a[at + k]);
      v.b = _mm512_mask_set1_epi32(v.b, vector.within[k], b[at + k]);
      v.c = _mm512_mask_set1_epi32(v.c, vector.within[k], c[at + k]);
      v.d = _mm512_mask_set1_epi32(v.d, vector.within[k], d[at + k]);
    }
    return v;
  }

  BISEAM_STEP __m512i values_at(const RunVector& vector, int first, int bits) const {
    const Cubics v = of(vector, first);
    const __m128i by = _mm_cvtsi32_si128(bits);
    const __m512i bend = _mm512_sra_epi32(sum(_mm512_mullo_epi32(v.d, vector.place), v.c), by);
    const __m512i slope = _mm512_sra_epi32(sum(_mm512_mullo_epi32(bend, vector.place), v.b), by);
    return sum(v.a, _mm512_sra_epi32(sum(_mm512_mullo_epi32(slope, vector.place), all((1 << bits) >> 1)), by));
  }
};

// The lower halves of two vectors.
BISEAM_STEP __m512i halves(__m512i low, __m512i high) { return _mm512_inserti64x4(low, _mm512_castsi512_si256(high), 1); }

// Nodes of a row side by side: of one coordinate, or few of both, each in its half of the lanes.  Past the last one nothing is
// read.
template <int coordinates>
struct NodeRow {
  const int32_t* nodes[coordinates];
  std::ptrdiff_t stride;
  __mmask16 columns;
  __m512i offset, halvings, wrapped_bits, slope_bits;

  BISEAM_STEP NodeRow(const NodeWindow& w, const NodeValues* of, int count)
      : stride(w.stride), columns(static_cast<__mmask16>((1u << count) - 1)) {
    for (int k = 0; k < coordinates; ++k) nodes[k] = of[k].first;
    const NodeValues &low = of[0], &high = of[coordinates - 1];
    offset = sides(all(low.offset - low.halvings), all(high.offset - high.halvings));
    halvings = sides(all(low.halvings), all(high.halvings));
    wrapped_bits = sides(all(low.wrapped_bits), all(high.wrapped_bits));
    slope_bits = sides(all(low.slope_bits), all(high.slope_bits));
  }

  BISEAM_STEP static __m512i sides(__m512i low, __m512i high) { return coordinates == 1 ? low : halves(low, high); }

  BISEAM_STEP __m512i load(int row) const {
    const __m512i low = _mm512_maskz_loadu_epi32(columns, nodes[0] + row * stride);
    const __m512i high = coordinates == 1 ? low : _mm512_maskz_loadu_epi32(columns, nodes[coordinates - 1] + row * stride);
    return _mm512_srav_epi32(_mm512_sub_epi32(sides(low, high), offset), halvings);
  }
};

BISEAM_STEP __m512i product(__m512i value, __m512i place, int bits) {
  return _mm512_sra_epi32(sum(_mm512_mullo_epi32(value, place), all((1 << bits) >> 1)), _mm_cvtsi32_si128(bits));
}

// Times 2^up, lane by lane, rounded half up.
BISEAM_STEP __m512i scaled(__m512i value, __m512i up) {
  const __m512i none = _mm512_setzero_si512(), down = _mm512_max_epi32(difference(none, up), none);
  const __m512i half = _mm512_srli_epi32(_mm512_sllv_epi32(all(1), down), 1);
  return _mm512_srav_epi32(sum(_mm512_sllv_epi32(value, _mm512_max_epi32(up, none)), half), down);
}

// Where columns are at a row of samples, and how they go on.
struct Going {
  __m512i from, first, second, third;
};

// Of columns of nodes, from the first sample at a place in a stretch between two rows.
BISEAM_STEP Going going_from(const NodeWindow& w, const Cubics& v, int at, __m512i once_closer) {
  const __m512i place = all(at), closer = all(bits_closer(w.down, w.bits));
  const __m512i twice_closer = difference(once_closer, closer), thrice_closer = difference(twice_closer, closer);
  const __m512i step = product(v.d, place, w.bits), once = sum(v.c, step), twice = sum(once, step), bend = sum(twice, step);
  const __m512i mean = sum(v.b, product(once, place, w.bits)), slope = sum(mean, product(twice, place, w.bits));
  const __m512i six = sum(_mm512_slli_epi32(v.d, 2), sum(v.d, v.d));
  return {sum(v.a, product(mean, place, w.bits)),
          sum(sum(scaled(slope, once_closer), scaled(bend, twice_closer)), scaled(v.d, thrice_closer)),
          sum(scaled(sum(bend, bend), twice_closer), scaled(six, thrice_closer)),
          scaled(six, sum(thrice_closer, all(kThirdBits)))};
}

// Between neighbouring lanes: from the third of a coordinate on.
template <class Wraps>
BISEAM_STEP Cubics cubics_across(__m512i values, Wraps wraps) {
  const __m512i next[kNodesAround] = {values, _mm512_alignr_epi32(values, values, 1), _mm512_alignr_epi32(values, values, 2),
                                      _mm512_alignr_epi32(values, values, 3), _mm512_alignr_epi32(values, values, 4)};
  const __m512i slope = slope_at(next, wraps);
  return cubic_between(next[2], rise(next[2], next[3], wraps), slope, _mm512_alignr_epi32(slope, slope, 1));
}

// From columns of nodes to columns of samples.
struct Spread {
  CubicRow from, first, second, third;
  int bits;

  template <class Wraps>
  BISEAM_STEP Spread(const Going& nodes, Wraps wraps, int spacing_bits)
      : from(cubics_across(nodes.from, wraps), spacing_bits),
        first(cubics_across(nodes.first, NoWraps{}), spacing_bits),
        second(cubics_across(nodes.second, NoWraps{}), spacing_bits),
        third(cubics_across(nodes.third, NoWraps{}), spacing_bits),
        bits(spacing_bits) {}

  BISEAM_STEP Going to(const RunVector& vector, int lane) const {
    return {from.values_at(vector, lane, bits), first.values_at(vector, lane, bits), second.values_at(vector, lane, bits),
            third.values_at(vector, lane, bits)};
  }
};

BISEAM_STEP __m512i times(__m512i value, int factor) { return _mm512_mullo_epi32(value, all(factor)); }

// Sixteen columns or less.
BISEAM_STEP void fill_columns(const Going& start, int fraction, const StretchRows& rows, __mmask16 lanes, int32_t* out) {
  const __m128i by = _mm_cvtsi32_si128(fraction);
  const __m512i third = _mm512_srai_epi32(sum(start.third, all(1 << (kThirdBits - 1))), kThirdBits);
  __m512i way = all((1 << fraction) >> 1), first = start.first, second = start.second;
  if (rows.before > 0) {
    const int pairs = rows.before * (rows.before - 1) / 2, triples = pairs * (rows.before - 2) / 3;
    way = sum(sum(way, times(first, rows.before)), sum(times(second, pairs), times(third, triples)));
    first = sum(first, sum(times(second, rows.before), times(third, pairs)));
    second = sum(second, times(third, rows.before));
  }
  for (int y = 0; y < rows.count; ++y) {
    _mm512_mask_storeu_epi32(out + y * kBlockWidth, lanes, sum(start.from, _mm512_sra_epi32(way, by)));
    way = sum(way, first);
    first = sum(first, second);
    second = sum(second, third);
  }
}

template <int coordinates>
BISEAM_STEP void fill_blocks(const NodeWindow& w, const NodeValues* values, int columns, const RunVector* across,
                             int32_t* const* out) {
  const NodeRow<coordinates> row(w, values, columns);
  __m512i nodes[kCubicNodes];
  for (int k = 0; k < kNodesAround; ++k) nodes[k + 1] = row.load(k);
  __m512i slope = slope_at(nodes + 1, row.wrapped_bits);
  const int down = stretches(w.down, w.bits), closer = bits_closer(w.down, w.bits), count = w.across.count;
  for (int j = 0; j < down; ++j) {
    for (int k = 0; k < kNodesAround; ++k) nodes[k] = nodes[k + 1];
    nodes[kNodesAround] = row.load(j + kNodesAround);
    const __m512i next_slope = slope_at(nodes + 1, row.wrapped_bits);
    const Cubics cubics = cubic_between(nodes[2], rise(nodes[2], nodes[3], row.wrapped_bits), slope, next_slope);
    slope = next_slope;
    const Stretch stretch = stretch_of(w.down, j, w.bits);
    const StretchRows rows = rows_of(stretch, w.down.step);
    if (rows.count == 0) continue;
    const Spread spread(going_from(w, cubics, stretch.place % w.down.step, row.slope_bits), row.wrapped_bits, w.bits);
    for (int k = 0; k < coordinates; ++k) {
      for (int i = 0; i < count; i += kLanes) {
        const auto lanes = static_cast<__mmask16>((1u << std::min(kLanes, count - i)) - 1);
        fill_columns(spread.to(across[i / kLanes], kFewNodes * k), values[k].slope_bits + closer, rows, lanes,
                     out[k] + stretch.first * kBlockWidth + i);
      }
    }
  }
}

}  // namespace

BISEAM_AVX512 void interpolate_nodes_avx512(const NodeWindow& window, int32_t* const out[2]) noexcept {
  const NodeWindow w = window;
  const int across = stretches(w.across, w.bits);
  if (across > kMostStretches) return kInterpolateNodes.avx2(w, out);
  RunVector runs_across[kBlockWidth / kLanes];
  divide_run(w.across, w.bits, runs_across);
  const int columns = across + kNodesAround;
  if (columns <= kFewNodes) {
    fill_blocks<2>(w, w.values, columns, runs_across, out);
  } else {
    for (int k = 0; k < 2; ++k) fill_blocks<1>(w, w.values + k, columns, runs_across, out + k);
  }
}

}  // namespace biseam::ring

#endif
