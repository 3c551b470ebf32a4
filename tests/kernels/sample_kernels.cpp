#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <numbers>
#include <vector>

#include "kernels/kernels.hpp"
#include "ring/sample/sample_row_kernels.hpp"

namespace biseam::test {

using namespace ring;

namespace {

// What a case samples, and how.
struct Case {
  SampleType type;
  Quality quality;
  int bits;
  SampleOutput output = SampleOutput::samples;
};

// Exactly the bytes that the samples take: the last row ends with its last sample.  Words hold all values of 16 bits.
SampleSource make_plane(KernelCall& call, const Case& kind, int width, int height) {
  static constexpr int paddings[] = {0, 0, 1, 7, 64};
  const int row = width * bytes_of(kind.type), stride = row + paddings[call.number(0, 4)];
  const uint8_t* bytes = call.input<uint8_t>(static_cast<std::size_t>((height - 1) * stride + row), 0, 255);
  const int shift = is_words(kind.type) && call.number(0, 1) == 1 ? 16 - kind.bits : 0;
  SampleSource source{bytes, stride, width, height, kind.type, static_cast<uint8_t>(kind.bits), static_cast<uint8_t>(shift)};
  if (call.number(0, 3) == 0) source.first += (height - 1) * stride, source.stride = -stride;
  return source;
}

// Sizes from what no window fits in to what holds many.
SampleSource any_plane(KernelCall& call, const Case& kind) {
  static constexpr int sizes[] = {1, 2, 5, 8, 16, 31, 33, 33, 40, 40, 90, 200};
  return make_plane(call, kind, sizes[call.number(0, 11)], sizes[call.number(0, 11)]);
}

int32_t to_fixed(double position) {
  return static_cast<int32_t>(std::lround(std::clamp(position, -32000.0, 32000.0) * 65536.0));
}

// A step of random direction and length along both axes.
struct Step {
  double x, y;
};

Step any_step(KernelCall& call, double longest) {
  const double angle = call.real(0.0f, 6.2831853f), length = call.real(0.1f, static_cast<float>(longest));
  return {length * std::cos(angle), length * std::sin(angle)};
}

// From anywhere in the picture or a little outside, in any direction, turning now and then, with a bend.  Every second row of
// positions meets an edge where a vector of them ends.
void draw_smooth(KernelCall& call, const SampleSource& source, double longest, int32_t* x, int32_t* y, int count) {
  double at_x = call.real(-5.0f, static_cast<float>(source.width + 5));
  double at_y = call.real(-5.0f, static_cast<float>(source.height + 5));
  Step step = any_step(call, longest);
  if (call.number(0, 1) == 0) {
    const int end = call.number(0, 2) == 0 ? 7 : 15, axis = call.number(0, 3) / 3;
    const int edge = (call.number(0, 1) == 0 ? 0 : axis == 0 ? source.width : source.height) + call.number(-4, 2);
    (axis == 0 ? at_x : at_y) = edge + call.real(0.0f, 1.0f) - end * (axis == 0 ? step.x : step.y);
  }
  const Step bend{call.real(-0.02f, 0.02f), call.real(-0.02f, 0.02f)};
  const int turns = call.number(0, 1);
  for (int i = 0; i < count; ++i) {
    x[i] = to_fixed(at_x), y[i] = to_fixed(at_y);
    at_x += step.x, at_y += step.y;
    if (turns == 0) continue;
    step = {step.x + bend.x, step.y + bend.y};
    if (call.number(0, 30) == 0) step = {-step.x, call.number(0, 1) == 0 ? step.y : -step.y};
  }
}

// Anywhere where all taps lie in the picture, often in its first or its last corner, seldom one sample outside.
void draw_scattered(KernelCall& call, const SampleSource& source, const AxisWeights& axis, int32_t* x, int32_t* y, int count) {
  const int room[] = {std::max(0, source.width - axis.taps), std::max(0, source.height - axis.taps)};
  const int rarity = call.number(20, 200);
  for (int i = 0; i < count; ++i) {
    const int corner = call.number(0, 5);
    for (int k = 0; k < 2; ++k) {
      int first = corner == 0 ? 0 : corner == 1 ? room[k] : call.number(0, room[k]);
      if (call.number(0, rarity) == 0) first += call.number(-1, 1);
      (k == 0 ? x : y)[i] = to_fixed(first + axis.before + call.real(0.0f, 0.99f));
    }
  }
}

// Anywhere, the ends of the range too, at whole samples and halves of a phase.
void draw_odd(KernelCall& call, const SampleSource& source, int32_t* x, int32_t* y, int count) {
  const auto any = [&call](int size) -> int32_t {
    switch (call.number(0, 9)) {
      case 0:
        return call.number(INT32_MIN, INT32_MAX);
      case 1:
        return call.number(0, 1) == 0 ? INT32_MAX - call.number(0, 600) : INT32_MIN + call.number(0, 600);
      case 2:
        return call.number(-2, size) * 65536;
      case 3:
        return call.number(-2, size * 128) * 512 - call.number(0, 1);
      default:
        return to_fixed(call.real(-3.0f, static_cast<float>(size + 2)));
    }
  };
  for (int i = 0; i < count; ++i) x[i] = any(source.width), y[i] = any(source.height);
}

// Rows of as many positions as the call's size says, in memory of their own.
struct Positions {
  int32_t *x, *y;
  int columns, rows, pitch;

  explicit Positions(KernelCall& call)
      : x(nullptr), y(nullptr), columns(call.size()), rows(any_rows(call)), pitch(columns + 3 * call.number(0, 1)) {
    const auto count = static_cast<std::size_t>(pitch * (rows - 1) + columns);
    x = call.input<int32_t>(count, 0, 0), y = call.input<int32_t>(count, 0, 0);
  }

  // draw: fills a row.
  template <class Draw>
  void draw(Draw draw) {
    for (int j = 0; j < rows; ++j) draw(x + j * pitch, y + j * pitch);
  }

  // Rows below the first one, which go on from it as in a picture: in any direction, seldom with a jump.
  void go_on(KernelCall& call, double longest) {
    const Step down = any_step(call, longest);
    const int jump = call.number(0, 4) == 0 ? call.number(1, rows) : rows, wide = call.number(1, 9);
    for (int j = 1; j < rows; ++j) {
      const double rise = j + (j >= jump ? wide : 0);
      for (int i = 0; i < columns; ++i) {
        x[j * pitch + i] = to_fixed(x[i] / 65536.0 + rise * down.x);
        y[j * pitch + i] = to_fixed(y[i] / 65536.0 + rise * down.y);
      }
    }
  }

  static int any_rows(KernelCall& call) {
    static constexpr int rows[] = {1, 2, 4, 4, 5, 8, 9};
    return rows[call.number(0, 6)];
  }
};

void run(KernelCall& call, const SampleJob& job, const Positions& at, SampleAll* sample) {
  const int each = output_bytes_of(job.source.type, job.output), gap = 5 * call.number(0, 1);
  const std::ptrdiff_t stride = (call.number(0, 3) == 0 ? -1 : 1) * (at.columns * each + gap);
  uint8_t* const out = call.output<uint8_t>(static_cast<std::size_t>(std::abs(stride) * (at.rows - 1) + at.columns * each));
  uint8_t* const first = stride < 0 ? out - stride * (at.rows - 1) : out;
  call.run([&] { sample(job, {at.x, at.y, at.pitch, first, stride, at.columns, at.rows}); });
}

template <Case kind>
void call_smooth(KernelCall& call, SampleAll* sample) {
  const SampleSource source = any_plane(call, kind);
  const AxisWeights& weights = axis_weights(kind.quality, 0);
  Positions at(call);
  draw_smooth(call, source, 1.7, at.x, at.y, at.columns);
  at.go_on(call, 1.7);
  run(call, {source, &weights, &weights, kind.output}, at, sample);
}

template <Case kind>
void call_odd(KernelCall& call, SampleAll* sample) {
  const SampleSource source = any_plane(call, kind);
  const AxisWeights& weights = axis_weights(kind.quality, 0);
  Positions at(call);
  at.draw([&](int32_t* x, int32_t* y) { draw_odd(call, source, x, y, at.columns); });
  run(call, {source, &weights, &weights, kind.output}, at, sample);
}

template <Case kind>
void call_scattered(KernelCall& call, SampleAll* sample) {
  const SampleSource source = any_plane(call, kind);
  const AxisWeights& weights = axis_weights(kind.quality, 0);
  Positions at(call);
  at.draw([&](int32_t* x, int32_t* y) { draw_scattered(call, source, weights, x, y, at.columns); });
  run(call, {source, &weights, &weights, kind.output}, at, sample);
}

// Every pair of widenings of both axes.
template <Case kind>
void call_widened(KernelCall& call, SampleAll* sample) {
  const SampleSource source = any_plane(call, kind);
  const int widest = call.number(0, 9) == 0 ? 14 : 6;
  const AxisWeights& across = axis_weights(kind.quality, call.number(0, widest));
  const AxisWeights& down = axis_weights(kind.quality, call.number(0, widest));
  Positions at(call);
  draw_smooth(call, source, 6, at.x, at.y, at.columns);
  at.go_on(call, 6);
  run(call, {source, &across, &down, kind.output}, at, sample);
}

// A row of a panorama of twice the picture's width, as an equidistant lens of 195 degrees gives it.  yaw turns the lens' axis
// away from the block, pitch tilts the panorama.
struct Look {
  double longitude, latitude, roll;  // of the block's middle; roll: by how much rows are turned
};

struct Point {
  double x, y;
};

Point project(double longitude, double latitude, double roll, int width) {
  const double x = std::cos(latitude) * std::sin(longitude), y = std::sin(latitude);
  const double z = std::cos(latitude) * std::cos(longitude), off = std::hypot(x, y), angle = std::atan2(off, z);
  const double radius = angle / (97.5 * std::numbers::pi / 180.0) * width / 2;
  const double cosine = off > 0 ? x / off : 1, sine = off > 0 ? y / off : 0;
  const double turn_cosine = std::cos(roll), turn_sine = std::sin(roll);
  return {(width - 1) / 2.0 + radius * (cosine * turn_cosine - sine * turn_sine),
          (width - 1) / 2.0 + radius * (cosine * turn_sine + sine * turn_cosine)};
}

// Blocks all over the lens.
constexpr Look kLooks[] = {{0.1, 0.1, 0},   {0.8, 0.2, 0},    {1.45, 0.1, 0},   {0.5, 0.8, 0},
                           {1.2, 0.9, 0},   {0.7, -1.3, 0},   {0.3, 0.2, 0.8},  {0.9, 0.5, 0.8},
                           {1.4, 0.1, 0.8}, {0.2, 0.3, 1.57}, {1.0, 0.4, 1.57}, {1.4, 0.2, 1.57}};
constexpr int kRows = 32, kBlock = 64;

// Of blocks, one after the other.
struct LookPositions {
  std::vector<int32_t> x, y;
};

// Positions of all looks at a picture of this size, found once, as each costs several functions of angles.
const LookPositions& positions_of_looks(int size) {
  static std::map<int, LookPositions> of_sizes;
  auto [place, is_new] = of_sizes.try_emplace(size);
  LookPositions& at = place->second;
  if (!is_new) return at;
  const double step = std::numbers::pi / size;
  for (const Look& look : kLooks) {
    for (int row = 0; row < kRows; ++row) {
      for (int i = 0; i < kBlock; ++i) {
        const Point point = project(look.longitude + step * i, look.latitude + step * row, look.roll, size);
        at.x.push_back(to_fixed(point.x)), at.y.push_back(to_fixed(point.y));
      }
    }
  }
  return at;
}

template <Case kind>
void call_lens(KernelCall& call, SampleAll* sample) {
  const int size = is_pairs(kind.type) ? call.size() / 2 : call.size();
  const int shift = is_words(kind.type) ? 16 - kind.bits : 0, stride = size * bytes_of(kind.type);
  const uint8_t* bytes = call.input<uint8_t>(static_cast<std::size_t>(stride) * static_cast<std::size_t>(size), 0, 255);
  const SampleSource source{bytes, stride, size, size, kind.type, static_cast<uint8_t>(kind.bits), static_cast<uint8_t>(shift)};
  const LookPositions& at = positions_of_looks(size);
  const AxisWeights& weights = axis_weights(kind.quality, 0);
  const SampleJob job{source, &weights, &weights, kind.output};
  const std::size_t each = static_cast<std::size_t>(output_bytes_of(kind.type, kind.output));
  uint8_t* const out = call.output<uint8_t>(each * kBlock * kRows);
  const auto below = static_cast<std::ptrdiff_t>(each * kBlock);
  call.run([&] {
    for (std::size_t i = 0; i < at.x.size(); i += kBlock * kRows) {
      sample(job, {at.x.data() + i, at.y.data() + i, kBlock, out, below, kBlock, kRows});
    }
  });
}

// Every second sample of the picture.
template <Case kind>
void call_reduced(KernelCall& call, SampleAll* sample) {
  const SampleSource source = make_plane(call, kind, 2 * call.size() + 40, 60);
  const AxisWeights& weights = axis_weights(kind.quality, widening_for(2));
  Positions at(call);
  for (int j = 0; j < at.rows; ++j) {
    for (int i = 0; i < at.columns; ++i) {
      at.x[j * at.pitch + i] = to_fixed(15.3 + 2.0 * i);
      at.y[j * at.pitch + i] = to_fixed(25 + 2.0 * j + 0.1 * i - 0.1 * (i / 100 * 100));
    }
  }
  run(call, {source, &weights, &weights, kind.output}, at, sample);
}

constexpr double kLensSamples = static_cast<double>(kRows) * kBlock * static_cast<double>(std::size(kLooks));

// What a block's rows have: up to 64.
std::vector<int> row_sizes() {
  std::vector<int> sizes;
  for (int i = 0; i <= 17; ++i) sizes.push_back(i);
  for (const int size : {31, 32, 33, 48, 63, 64, 65}) sizes.push_back(size);
  return sizes;
}

template <Case kind>
void add_type(std::vector<Kernel>& kernels, const std::string& name) {
  kernels.push_back(
      make_kernel("sample " + name + ", lens", kSampleRows, call_lens<kind>, 1920, kLensSamples / 1920, {64, 200}));
  const auto add = [&](const std::string& kind_of_row, void (*call)(KernelCall&, SampleAll*)) {
    kernels.push_back(make_kernel("sample " + name + kind_of_row, kSampleRows, call, 64, 1, row_sizes()));
  };
  add(", smooth", call_smooth<kind>);
  add(", scattered", call_scattered<kind>);
  add(", odd", call_odd<kind>);
  constexpr Case fine{kind.type, kind.quality, kind.bits, SampleOutput::fine};
  add(", fine, smooth", call_smooth<fine>);
}

template <Quality quality>
void add_quality(std::vector<Kernel>& kernels, const std::string& name) {
  add_type<Case{SampleType::bytes, quality, 8}>(kernels, name + " bytes");
  add_type<Case{SampleType::byte_pairs, quality, 8}>(kernels, name + " byte pairs");
  add_type<Case{SampleType::words, quality, 10}>(kernels, name + " words");
  add_type<Case{SampleType::word_pairs, quality, 10}>(kernels, name + " word pairs");
  const std::vector<int> few{0, 1, 3, 8, 15, 17, 33};
  kernels.push_back(make_kernel("sample " + name + " bytes, half", kSampleRows,
                                call_reduced<Case{SampleType::bytes, quality, 8}>, 960, 1, few));
  kernels.push_back(make_kernel("sample " + name + " byte pairs, half", kSampleRows,
                                call_reduced<Case{SampleType::byte_pairs, quality, 8}>, 480, 1, few));
  kernels.push_back(make_kernel("sample " + name + " bytes, widened", kSampleRows,
                                call_widened<Case{SampleType::bytes, quality, 8}>, 64, 1, few));
  kernels.push_back(make_kernel("sample " + name + " byte pairs, widened", kSampleRows,
                                call_widened<Case{SampleType::byte_pairs, quality, 8}>, 64, 1, few));
  kernels.push_back(make_kernel("sample " + name + " bytes, widened, fine", kSampleRows,
                                call_widened<Case{SampleType::bytes, quality, 8, SampleOutput::fine}>, 64, 1, few));
  kernels.push_back(make_kernel("sample " + name + " byte pairs, widened, fine", kSampleRows,
                                call_widened<Case{SampleType::byte_pairs, quality, 8, SampleOutput::fine}>, 64, 1, few));
  kernels.push_back(make_kernel("sample " + name + " words, widened", kSampleRows,
                                call_widened<Case{SampleType::words, quality, 12}>, 64, 1, few));
  kernels.push_back(make_kernel("sample " + name + " word pairs, widened", kSampleRows,
                                call_widened<Case{SampleType::word_pairs, quality, 12}>, 64, 1, few));
}

}  // namespace

std::vector<Kernel> sample_kernels() {
  std::vector<Kernel> kernels;
  add_quality<Quality::fast>(kernels, "fast");
  add_quality<Quality::good>(kernels, "good");
  add_quality<Quality::best>(kernels, "best");
  return kernels;
}

}  // namespace biseam::test
