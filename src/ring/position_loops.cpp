#include "ring/position_loops.hpp"

#include <bit>

#include "base/loop_versions.hpp"
#include "ring/positions.hpp"

namespace biseam::ring {

namespace {

// Half-pixel nodes have this many columns in a block and one sample more, which coarse grids go on for.
constexpr int kMostColumns = 2 * kBlockWidth + 1 + kNodesAround;

// A + u (B + u (C + u D)) with u in units of 2^-bits.  B and C are kept times 2^bits, with the half that rounds the product
// added to them.
struct Cubic {
  std::int32_t a, b, c, d;
};

BISEAM_LOOP std::int32_t held(std::int32_t value, std::int32_t limit) noexcept {
  const std::int32_t low = value < -limit ? -limit : value;
  return low > limit ? limit : low;
}

// From one value to another, as near as they can be modulo 2^(32 - wrapped_bits).
BISEAM_LOOP std::uint32_t rise(std::int32_t from, std::int32_t to, int wrapped_bits) noexcept {
  const std::uint32_t apart = (static_cast<std::uint32_t>(to) - static_cast<std::uint32_t>(from)) << wrapped_bits;
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(apart) >> wrapped_bits);
}

// At the third of five nodes of equal distance: a twelfth, as a sixth rounded towards 0 and its half rounded half up.
BISEAM_LOOP std::uint32_t slope_at(int wrapped_bits, const std::int32_t* nodes) noexcept {
  const auto rise_to = [&](int node) { return rise(nodes[2], nodes[node], wrapped_bits); };
  const std::uint32_t twelve = 8 * (rise_to(3) - rise_to(1)) - (rise_to(4) - rise_to(0));
  return static_cast<std::uint32_t>((static_cast<std::int32_t>(twelve) / 6 + 1) >> 1);
}

// Between the third and the fourth of six nodes of equal distance.  Sums wrap around where nodes mean nothing.
BISEAM_LOOP Cubic cubic_between(int bits, int wrapped_bits, const std::int32_t (&nodes)[kCubicNodes]) noexcept {
  const std::uint32_t second = rise(nodes[2], nodes[3], wrapped_bits);
  const std::uint32_t slope = slope_at(wrapped_bits, nodes), both = slope + slope_at(wrapped_bits, nodes + 1);
  const std::int32_t d = held(static_cast<std::int32_t>(both - 2 * second), 1 << 22);
  const std::int32_t c = held(static_cast<std::int32_t>(3 * second - both - slope), 1 << 22);
  const std::int32_t b =
      held(static_cast<std::int32_t>(second - static_cast<std::uint32_t>(c) - static_cast<std::uint32_t>(d)), 1 << 24);
  const std::int32_t one = 1 << bits, half = one >> 1;
  return {nodes[2], b * one + half, c * one + half, d};
}

BISEAM_LOOP std::int32_t at(const Cubic& v, std::int32_t place, int bits) noexcept {
  const std::int32_t half = (1 << bits) >> 1;
  const std::int32_t slope = (((v.d * place + v.c) >> bits) * place + v.b) >> bits;
  return v.a + ((slope * place + half) >> bits);
}

// Samples of a run that lie between node number index and the next one.
struct Stretch {
  int first, end;  // of the run's samples
  int place;       // of the first
};

BISEAM_LOOP Stretch stretch_of(const SampleRun& run, int index, int bits) noexcept {
  const auto samples_before = [&](int node) {
    const int count = ((node << bits) - run.start + run.step - 1) >> std::countr_zero(static_cast<unsigned>(run.step));
    return count < 0 ? 0 : count > run.count ? run.count : count;
  };
  const int first = samples_before(index);
  return {first, samples_before(index + 1), run.start + first * run.step - (index << bits)};
}

BISEAM_LOOP int stretches(const SampleRun& run, int bits) noexcept {
  return ((run.start + (run.count - 1) * run.step) >> bits) + 1;
}

BISEAM_LOOP std::int32_t node_value(const NodeValues& of, std::int32_t node) noexcept {
  const std::uint32_t value = static_cast<std::uint32_t>(node) - static_cast<std::uint32_t>(of.offset);
  return static_cast<std::int32_t>(value + static_cast<std::uint32_t>(of.halvings)) >> of.halvings;
}

// Vectors of a fixed length, as compilers make none of short loops whose length they don't know.
template <int Count>
BISEAM_LOOP void fill_vector(const Cubic& v, std::int32_t place, int step, int bits, std::int32_t* out) noexcept {
  BISEAM_KEEP_LOOP
  for (int i = 0; i < Count; ++i) out[i] = at(v, place + i * step, bits);
}

BISEAM_LOOP void fill_stretch(const Cubic& v, const Stretch& stretch, int step, int bits, std::int32_t* out) noexcept {
  const int count = stretch.end - stretch.first;
  int i = 0;
  for (; i + 16 <= count; i += 16) fill_vector<16>(v, stretch.place + i * step, step, bits, out + i);
  for (; i + 8 <= count; i += 8) fill_vector<8>(v, stretch.place + i * step, step, bits, out + i);
  for (; i < count; ++i) out[i] = at(v, stretch.place + i * step, bits);
}

constexpr int kGroup = 8;

// Cubics of as many columns of nodes, which are worked out together.
struct ColumnCubics {
  alignas(32) std::int32_t a[kGroup], b[kGroup], c[kGroup], d[kGroup];
};

// Down through the nodes of a row of them and those below.  Past the last column nothing is read.
BISEAM_LOOP void find_cubics_down(const NodeWindow& w, const NodeValues& values, int column, int columns, int row,
                                  ColumnCubics& cubics) noexcept {
  const std::int32_t* rows[kCubicNodes];
  for (int k = 0; k < kCubicNodes; ++k) rows[k] = values.first + (row + k) * w.stride + column;
  BISEAM_TURNS_APART
  BISEAM_KEEP_LOOP
  for (int i = 0; i < kGroup; ++i) {
    std::int32_t nodes[kCubicNodes];
    for (int k = 0; k < kCubicNodes; ++k) nodes[k] = i < columns ? node_value(values, rows[k][i]) : 0;
    const Cubic v = cubic_between(w.bits, values.wrapped_bits, nodes);
    cubics.a[i] = v.a;
    cubics.b[i] = v.b;
    cubics.c[i] = v.c;
    cubics.d[i] = v.d;
  }
}

BISEAM_LOOP void fill_columns(const NodeWindow& w, const NodeValues& values, int first, int columns,
                              std::int32_t (*out)[kBlockHeight]) noexcept {
  const int count = stretches(w.down, w.bits);
  for (int j = 0; j < count; ++j) {
    ColumnCubics cubics;
    find_cubics_down(w, values, first, columns, j, cubics);
    const Stretch stretch = stretch_of(w.down, j, w.bits);
    for (int i = 0; i < columns; ++i) {
      const Cubic v = {cubics.a[i], cubics.b[i], cubics.c[i], cubics.d[i]};
      fill_stretch(v, stretch, w.down.step, w.bits, out[i] + stretch.first);
    }
  }
}

struct RowCubics {
  const std::int32_t *a, *b, *c, *d;
  Cubic at_row(int y) const noexcept { return {a[y], b[y], c[y], d[y]}; }
};

// Rows of which each has Count samples in the stretch.
template <int Count>
BISEAM_LOOP void fill_even_rows(const NodeWindow& w, const Stretch& stretch, const RowCubics& cubics,
                                std::int32_t* out) noexcept {
  for (int y = 0; y < w.down.count; ++y) {
    fill_vector<Count>(cubics.at_row(y), stretch.place, w.across.step, w.bits, out + y * kBlockWidth);
  }
}

BISEAM_LOOP void fill_rows(const NodeWindow& w, const NodeValues& values, const Stretch& stretch,
                           const std::int32_t (*columns)[kBlockHeight], std::int32_t* out) noexcept {
  std::int32_t a[kBlockHeight], b[kBlockHeight], c[kBlockHeight], d[kBlockHeight];
  for (int y = 0; y < w.down.count; ++y) {
    std::int32_t nodes[kCubicNodes];
    for (int k = 0; k < kCubicNodes; ++k) nodes[k] = columns[k][y];
    const Cubic v = cubic_between(w.bits, values.wrapped_bits, nodes);
    a[y] = v.a;
    b[y] = v.b;
    c[y] = v.c;
    d[y] = v.d;
  }
  const int count = stretch.end - stretch.first;
  const RowCubics cubics = {a, b, c, d};
  switch (count) {
    case 32:
      return fill_even_rows<32>(w, stretch, cubics, out + stretch.first);
    case 16:
      return fill_even_rows<16>(w, stretch, cubics, out + stretch.first);
    case 8:
      return fill_even_rows<8>(w, stretch, cubics, out + stretch.first);
    default:
      for (int y = 0; y < w.down.count; ++y) {
        fill_stretch(cubics.at_row(y), stretch, w.across.step, w.bits, out + y * kBlockWidth + stretch.first);
      }
  }
}

BISEAM_LOOP void fill_block(const NodeWindow& w, const NodeValues& values, std::int32_t* out) noexcept {
  alignas(64) std::int32_t columns[kMostColumns][kBlockHeight];
  const int count = stretches(w.across, w.bits), nodes = count + kNodesAround;
  for (int i = 0; i < nodes; i += kGroup) {
    fill_columns(w, values, i, nodes - i < kGroup ? nodes - i : kGroup, columns + i);
  }
  for (int i = 0; i < count; ++i) fill_rows(w, values, stretch_of(w.across, i, w.bits), columns + i, out);
}

BISEAM_LOOP void interpolate(const NodeWindow& window, std::int32_t* const out[2]) noexcept {
  const NodeWindow w = window;
  for (int k = 0; k < 2; ++k) fill_block(w, w.values[k], out[k]);
}

constexpr Variants<InterpolateNodes> kLoops = loop_versions<interpolate, InterpolateNodes>;

}  // namespace

constinit const Variants<InterpolateNodes> kInterpolateNodes{kLoops.scalar, kLoops.neon, kLoops.avx2,
                                                             BISEAM_ON_X86_64(interpolate_nodes_avx512)};

}  // namespace biseam::ring
