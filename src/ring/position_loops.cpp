#include "ring/position_loops.hpp"

#include "base/loop_versions.hpp"
#include "ring/positions.hpp"

namespace biseam::ring {

namespace {

// Half-pixel nodes have this many columns in a block.
constexpr int kMostColumns = 2 * kBlockWidth + 3;

struct Cubic {
  std::int32_t a, b, c, d;
};

BISEAM_LOOP std::int32_t held(std::int32_t value, std::int32_t limit) noexcept {
  const std::int32_t low = value < -limit ? -limit : value;
  return low > limit ? limit : low;
}

// Differences wrap around where nodes mean nothing.
BISEAM_LOOP Cubic cubic_through(std::int32_t before, std::int32_t first, std::int32_t second, std::int32_t after) noexcept {
  const auto n = [](std::int32_t value) { return static_cast<std::uint32_t>(value); };
  const auto s = [](std::uint32_t value) { return static_cast<std::int32_t>(value); };
  const std::int32_t third = s(n(after) - n(before) + 3 * (n(first) - n(second)));
  const std::int32_t bend = s(n(before) - n(first) + (n(second) - n(first)));
  const std::int32_t d = held(third / 6, 1 << 22), c = held((bend + 1) >> 1, 1 << 22);
  const std::int32_t b = held(s(n(second) - n(first) - n(c) - n(d)), 1 << 24);
  return {first, b, c, d};
}

BISEAM_LOOP std::int32_t at(const Cubic& v, std::int32_t place, int bits) noexcept {
  const std::int32_t half = (1 << bits) >> 1;
  std::int32_t sum = ((v.d * place + half) >> bits) + v.c;
  sum = ((sum * place + half) >> bits) + v.b;
  return v.a + ((sum * place + half) >> bits);
}

// Samples of a run that lie between node number index and the next one.
struct Stretch {
  int first, end;  // of the run's samples
  int place;       // of the first
};

BISEAM_LOOP Stretch stretch_of(const SampleRun& run, int index, int bits) noexcept {
  const auto samples_before = [&](int node) {
    const int count = ((node << bits) - run.start + run.step - 1) / run.step;
    return count < 0 ? 0 : count > run.count ? run.count : count;
  };
  const int first = samples_before(index);
  return {first, samples_before(index + 1), run.start + first * run.step - (index << bits)};
}

BISEAM_LOOP int stretches(const SampleRun& run, int bits) noexcept {
  return ((run.start + (run.count - 1) * run.step) >> bits) + 1;
}

BISEAM_LOOP std::int32_t node_value(const NodeWindow& w, std::int32_t reference, int column, int row) noexcept {
  const std::uint32_t node = static_cast<std::uint32_t>(w.nodes[row * w.stride + column]);
  const std::uint32_t apart = (node - static_cast<std::uint32_t>(reference)) << w.wrapped_bits;
  const std::int32_t value = reference + (static_cast<std::int32_t>(apart) >> w.wrapped_bits);
  return (value - w.offset + w.halvings) >> w.halvings;
}

BISEAM_LOOP void fill_column(const NodeWindow& w, std::int32_t reference, int column, std::int32_t* out) noexcept {
  const int count = stretches(w.down, w.bits);
  for (int j = 0; j < count; ++j) {
    const Cubic v = cubic_through(node_value(w, reference, column, j), node_value(w, reference, column, j + 1),
                                  node_value(w, reference, column, j + 2), node_value(w, reference, column, j + 3));
    const Stretch stretch = stretch_of(w.down, j, w.bits);
    for (int y = stretch.first; y < stretch.end; ++y) out[y] = at(v, stretch.place + (y - stretch.first) * w.down.step, w.bits);
  }
}

// Count is the number of samples, or 0 where it is only known at run time.
template <int Count>
BISEAM_LOOP void fill_stretch(const Cubic& v, const Stretch& stretch, int step, int bits, std::int32_t* out) noexcept {
  const int count = Count != 0 ? Count : stretch.end - stretch.first;
  for (int i = 0; i < count; ++i) out[i] = at(v, stretch.place + i * step, bits);
}

BISEAM_LOOP void fill_rows(const NodeWindow& w, const Stretch& stretch, const std::int32_t (*columns)[kBlockHeight],
                           std::int32_t* out) noexcept {
  std::int32_t a[kBlockHeight], b[kBlockHeight], c[kBlockHeight], d[kBlockHeight];
  for (int y = 0; y < w.down.count; ++y) {
    const Cubic v = cubic_through(columns[0][y], columns[1][y], columns[2][y], columns[3][y]);
    a[y] = v.a;
    b[y] = v.b;
    c[y] = v.c;
    d[y] = v.d;
  }
  const int count = stretch.end - stretch.first;
  for (int y = 0; y < w.down.count; ++y) {
    const Cubic v = {a[y], b[y], c[y], d[y]};
    std::int32_t* row = out + y * kBlockWidth + stretch.first;
    if (count == 32) {
      fill_stretch<32>(v, stretch, w.across.step, w.bits, row);
    } else if (count == 16) {
      fill_stretch<16>(v, stretch, w.across.step, w.bits, row);
    } else {
      fill_stretch<0>(v, stretch, w.across.step, w.bits, row);
    }
  }
}

BISEAM_LOOP void interpolate(const NodeWindow& window, std::int32_t* out) noexcept {
  const NodeWindow w = window;
  alignas(64) std::int32_t columns[kMostColumns][kBlockHeight];
  const int count = stretches(w.across, w.bits);
  const std::int32_t reference = w.nodes[w.stride + 1];
  for (int i = 0; i < count + 3; ++i) fill_column(w, reference, i, columns[i]);
  for (int i = 0; i < count; ++i) fill_rows(w, stretch_of(w.across, i, w.bits), columns + i, out);
}

}  // namespace

constinit const Variants<InterpolateNodes> kInterpolateNodes = loop_versions<interpolate, InterpolateNodes>;

}  // namespace biseam::ring
