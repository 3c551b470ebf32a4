#include "ring/position_loops.hpp"

#include "base/loop_versions.hpp"
#include "ring/positions.hpp"

namespace biseam::ring {

namespace {

// So many columns are worked out together.
constexpr int kGroup = 8;

// Half-pixel nodes have this many columns in a block and one sample more, which coarse grids go on for; in whole groups.
constexpr int kMostColumns = (2 * kBlockWidth + 1 + kNodesAround + kGroup - 1) / kGroup * kGroup;

// A + u (B + u (C + u D)) with u in units of 2^-bits.  A is anything where nodes mean nothing.
struct Cubic {
  std::int32_t a, b, c, d;
};

BISEAM_TERM std::int32_t held(std::int32_t value, std::int32_t limit) noexcept {
  const std::int32_t low = value < -limit ? -limit : value;
  return low > limit ? limit : low;
}

// From one value to another, as near as they can be modulo 2^(32 - wrapped_bits).
BISEAM_TERM std::uint32_t rise(std::int32_t from, std::int32_t to, int wrapped_bits) noexcept {
  const std::uint32_t apart = (static_cast<std::uint32_t>(to) - static_cast<std::uint32_t>(from)) << wrapped_bits;
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(apart) >> wrapped_bits);
}

// At the third of five nodes of equal distance: a twelfth, as a sixth rounded towards 0 and its half rounded half up.
BISEAM_TERM std::uint32_t slope_at(int wrapped_bits, const std::int32_t* nodes) noexcept {
  const std::int32_t here = nodes[2];
  const std::uint32_t once = rise(here, nodes[3], wrapped_bits) - rise(here, nodes[1], wrapped_bits);
  const std::uint32_t twice = rise(here, nodes[4], wrapped_bits) - rise(here, nodes[0], wrapped_bits);
  return static_cast<std::uint32_t>((static_cast<std::int32_t>(8 * once - twice) / 6 + 1) >> 1);
}

// Between the third and the fourth of six nodes of equal distance.  Sums wrap around where nodes mean nothing.
BISEAM_TERM Cubic cubic_between(int wrapped_bits, const std::int32_t (&nodes)[kCubicNodes]) noexcept {
  const std::uint32_t second = rise(nodes[2], nodes[3], wrapped_bits);
  const std::uint32_t slope = slope_at(wrapped_bits, nodes), both = slope + slope_at(wrapped_bits, nodes + 1);
  const std::int32_t d = held(static_cast<std::int32_t>(both - 2 * second), 1 << 22);
  const std::int32_t c = held(static_cast<std::int32_t>(3 * second - both - slope), 1 << 22);
  const std::int32_t b =
      held(static_cast<std::int32_t>(second - static_cast<std::uint32_t>(c) - static_cast<std::uint32_t>(d)), 1 << 24);
  return {nodes[2], b, c, d};
}

BISEAM_TERM std::int32_t product(std::int32_t value, std::int32_t place, int bits) noexcept {
  return (value * place + ((1 << bits) >> 1)) >> bits;
}

BISEAM_TERM std::int32_t at(const Cubic& v, std::int32_t place, int bits) noexcept {
  const std::int32_t more = product(v.b + product(v.c + product(v.d, place, bits), place, bits), place, bits);
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(v.a) + static_cast<std::uint32_t>(more));
}

BISEAM_TERM std::int32_t node_value(const NodeValues& of, std::int32_t node) noexcept {
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

// Times 2^up, rounded half up; wrapping around where nodes mean nothing.
BISEAM_TERM std::uint32_t scaled(std::int32_t value, int up) noexcept {
  if (up >= 0) return static_cast<std::uint32_t>(value) << up;
  const std::uint32_t more = static_cast<std::uint32_t>(value) + ((1u << -up) >> 1);
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(more) >> -up);
}

// Where columns are at a row of samples, and how they go on.
template <int Columns>
struct Going {
  alignas(32) std::int32_t from[Columns], first[Columns], second[Columns], third[Columns];
};

// Of columns of nodes: a group, from the first sample at a place in a stretch between two rows.  Past the last column nothing
// is read.
BISEAM_LOOP void start_group(const NodeWindow& w, const NodeValues& values, int row, std::int32_t place, int column,
                             int columns, Going<kMostColumns>& going) noexcept {
  const int once_closer = values.slope_bits, closer = bits_closer(w.down, w.bits), rest = columns - column;
  const int twice_closer = once_closer - closer, thrice_closer = twice_closer - closer;
  const std::int32_t* rows[kCubicNodes];
  for (int k = 0; k < kCubicNodes; ++k) rows[k] = values.first + (row + k) * w.stride + column;
  BISEAM_TURNS_APART
  BISEAM_KEEP_LOOP
  for (int i = 0; i < kGroup; ++i) {
    std::int32_t nodes[kCubicNodes];
    for (int k = 0; k < kCubicNodes; ++k) nodes[k] = i < rest ? node_value(values, rows[k][i]) : 0;
    const Cubic v = cubic_between(values.wrapped_bits, nodes);
    // The same cubic, counted from the sample on.
    const std::int32_t third = product(v.d, place, w.bits), once = v.c + third, twice = once + third, bend = twice + third;
    const std::int32_t mean = v.b + product(once, place, w.bits), slope = mean + product(twice, place, w.bits);
    going.from[column + i] = v.a + product(mean, place, w.bits);
    going.first[column + i] =
        static_cast<std::int32_t>(scaled(slope, once_closer) + scaled(bend, twice_closer) + scaled(v.d, thrice_closer));
    going.second[column + i] = static_cast<std::int32_t>(scaled(2 * bend, twice_closer) + scaled(6 * v.d, thrice_closer));
    going.third[column + i] = static_cast<std::int32_t>(scaled(6 * v.d, thrice_closer + kThirdBits));
  }
}

BISEAM_TERM Cubic cubic_from(const std::int32_t* first, int wrapped_bits) noexcept {
  std::int32_t nodes[kCubicNodes];
  for (int k = 0; k < kCubicNodes; ++k) nodes[k] = first[k];
  return cubic_between(wrapped_bits, nodes);
}

// From columns of nodes to columns of samples.
BISEAM_LOOP void spread(const NodeWindow& w, int wrapped_bits, const Going<kMostColumns>& nodes,
                        Going<kBlockWidth>& samples) noexcept {
  const int count = stretches(w.across, w.bits), step = w.across.step;
  for (int i = 0; i < count; ++i) {
    const Stretch stretch = stretch_of(w.across, i, w.bits);
    fill_stretch(cubic_from(nodes.from + i, wrapped_bits), stretch, step, w.bits, samples.from + stretch.first);
    fill_stretch(cubic_from(nodes.first + i, 0), stretch, step, w.bits, samples.first + stretch.first);
    fill_stretch(cubic_from(nodes.second + i, 0), stretch, step, w.bits, samples.second + stretch.first);
    fill_stretch(cubic_from(nodes.third + i, 0), stretch, step, w.bits, samples.third + stretch.first);
  }
}

// A group of columns or less.
BISEAM_LOOP void fill_columns(const Going<kBlockWidth>& start, int fraction, const StretchRows& rows, int column, int columns,
                              std::int32_t* out) noexcept {
  const auto before = static_cast<std::uint32_t>(rows.before);
  const std::uint32_t pairs = before * (before - 1) / 2, triples = pairs * (before - 2) / 3;
  std::uint32_t way[kGroup], first[kGroup], second[kGroup], third[kGroup];
  for (int i = 0; i < columns; ++i) {
    third[i] = scaled(start.third[column + i], -kThirdBits);
    second[i] = static_cast<std::uint32_t>(start.second[column + i]);
    first[i] = static_cast<std::uint32_t>(start.first[column + i]);
    way[i] = (1u << fraction >> 1) + before * first[i] + pairs * second[i] + triples * third[i];
    first[i] += before * second[i] + pairs * third[i];
    second[i] += before * third[i];
  }
  for (int y = 0; y < rows.count; ++y) {
    BISEAM_KEEP_LOOP
    for (int i = 0; i < columns; ++i) {
      out[y * kBlockWidth + column + i] = start.from[column + i] + (static_cast<std::int32_t>(way[i]) >> fraction);
      way[i] += first[i];
      first[i] += second[i];
      second[i] += third[i];
    }
  }
}

BISEAM_LOOP void fill_block(const NodeWindow& w, const NodeValues& values, std::int32_t* out) noexcept {
  const int nodes = stretches(w.across, w.bits) + kNodesAround, columns = w.across.count;
  const int count = stretches(w.down, w.bits), fraction = values.slope_bits + bits_closer(w.down, w.bits);
  for (int j = 0; j < count; ++j) {
    const Stretch stretch = stretch_of(w.down, j, w.bits);
    const StretchRows rows = rows_of(stretch, w.down.step);
    if (rows.count == 0) continue;
    Going<kMostColumns> start;
    for (int i = 0; i < nodes; i += kGroup) start_group(w, values, j, stretch.place % w.down.step, i, nodes, start);
    Going<kBlockWidth> going;
    spread(w, values.wrapped_bits, start, going);
    std::int32_t* const first = out + stretch.first * kBlockWidth;
    int i = 0;
    for (; i + kGroup <= columns; i += kGroup) fill_columns(going, fraction, rows, i, kGroup, first);
    if (i < columns) fill_columns(going, fraction, rows, i, columns - i, first);
  }
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
