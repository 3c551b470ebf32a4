#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "frame/remap/sample_row.hpp"
#include "kernels/kernels.hpp"

namespace biseam::test {

namespace {

// A plane of samples in exactly the bytes it needs: the last row ends with its last sample.
struct Plane {
  const uint8_t* first;
  std::ptrdiff_t stride;
  int width, height;  // in samples
};

Plane make_plane(KernelCall& call, int width, int height, int sample_bytes) {
  static constexpr int paddings[] = {0, 0, 1, 7, 64};
  const int row = width * sample_bytes, stride = row + paddings[call.number(0, 4)];
  const uint8_t* bytes = call.input<uint8_t>(static_cast<std::size_t>((height - 1) * stride + row), 0, 255);
  if (call.number(0, 5) != 0) return {bytes, stride, width, height};
  return {bytes + (height - 1) * stride, -stride, width, height};  // stored from the bottom up
}

// Sizes from what no window fits in to what holds many.
Plane any_plane(KernelCall& call, int sample_bytes) {
  static constexpr int widths[] = {2, 3, 15, 16, 17, 40, 200}, heights[] = {2, 4, 5, 8, 9, 10, 30, 90};
  return make_plane(call, widths[call.number(0, 6)], heights[call.number(0, 7)], sample_bytes);
}

// Positions along one axis, from 0 to what has its neighbour as the axis' last sample.
struct Axis {
  float scale;  // table units per sample
  float last;   // in samples
};

// The last position of the sample before this one, with room for what a factor's rounding adds.
float before(int sample) { return static_cast<float>(sample) * (1.0f - 1e-6f); }

float reflect(float position, float last) {
  if (!(last > 0.0f)) return 0.0f;
  const float turned = std::fmod(std::fabs(position), 2.0f * last);
  return std::min(turned <= last ? turned : 2.0f * last - turned, last);
}

float odd_position(KernelCall& call, const Axis& axis) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN(), infinity = std::numeric_limits<float>::infinity();
  switch (call.number(0, 11)) {
    case 0:
      return nan;
    case 1:
      return -infinity;
    case 2:
      return -call.real(0.0f, 2.0f);
    case 3:
      return -call.real(0.0f, 2000.0f);
    case 4:
      return -1e9f * call.real(0.0f, 20.0f);  // weights whose products pass 2^31 and 2^32
    case 5:
      return -std::ldexp(call.real(1.0f, 2.0f), call.number(-149, 127));
    case 6:
      return std::ldexp(call.real(1.0f, 2.0f), call.number(-149, -1));
    case 7:
      return -0.0f;
    case 8:
      return axis.scale * axis.last;
    default:
      return axis.scale * std::floor(call.real(0.0f, axis.last));
  }
}

using Positions = void (*)(KernelCall& call, float* entries, int count, int step, const Axis (&axes)[2]);

// As lenses give them: near each other, with a little noise, now and then turning round.
void draw_smooth(KernelCall& call, float* entries, int count, int step, const Axis (&axes)[2]) {
  for (int i = 0; i < 2; ++i) {
    const float start = call.real(0.0f, 300.0f), slope = call.real(-1.3f, 1.3f) / static_cast<float>(1 + 2 * i);
    for (int k = 0; k < count; ++k) {
      const float position = start + slope * static_cast<float>(k) + call.real(0.0f, 0.1f);
      entries[k * step + i] = axes[i].scale * reflect(position, axes[i].last);
    }
  }
}

void draw_scattered(KernelCall& call, float* entries, int count, int step, const Axis (&axes)[2]) {
  for (int k = 0; k < count; ++k) {
    for (int i = 0; i < 2; ++i) entries[k * step + i] = axes[i].scale * call.real(0.0f, axes[i].last);
  }
}

// A denormal fraction and one that is large enough for their product to count.
void draw_denormal(KernelCall& call, float* entry) {
  const int tiny = call.number(0, 1);
  entry[tiny] = std::ldexp(call.real(-1.0f, 1.0f), call.number(-130, -126));
  entry[1 - tiny] = -std::ldexp(call.real(1.0f, 2.0f), call.number(114, 119));
}

// Smooth, but for some entries that are far off, no numbers, or lead to results past a byte.
void draw_odd(KernelCall& call, float* entries, int count, int step, const Axis (&axes)[2]) {
  draw_smooth(call, entries, count, step, axes);
  const int rarity = call.number(1, 40);
  for (int k = 0; k < count; ++k) {
    for (int i = 0; i < 2; ++i) {
      if (call.number(0, rarity) == 0) entries[k * step + i] = odd_position(call, axes[i]);
    }
    if (call.number(0, 3 * rarity) == 0) draw_denormal(call, entries + k * step);
  }
}

template <Positions draw>
void call_luma(KernelCall& call, SampleLumaRow* sample) {
  const int count = call.size();
  const Plane plane = any_plane(call, 1);
  float* entries = call.input<float>(static_cast<std::size_t>(2 * count), 0, 0);
  draw(call, entries, count, 2, {{1.0f, before(plane.width)}, {1.0f, before(plane.height - 1)}});
  uint8_t* out = call.output<uint8_t>(static_cast<std::size_t>(count));
  call.run([&] { sample(entries, plane.first, plane.stride, out, count); });
}

template <Positions draw>
void call_chroma(KernelCall& call, SampleChromaRow* sample) {
  const int count = call.size();
  const float y_factor = call.number(0, 1) != 0 ? 2.0f : 1.0f;
  const Plane plane = any_plane(call, 2);
  // Without the entry that the last pair skips.
  float* entries = call.input<float>(static_cast<std::size_t>(std::max(0, 4 * count - 2)), 0, 0);
  draw(call, entries, count, 4, {{2.0f, before(plane.width - 1)}, {y_factor, before(plane.height - 1)}});
  uint8_t* out = call.output<uint8_t>(static_cast<std::size_t>(2 * count));
  call.run([&] { sample(entries, plane.first, plane.stride, y_factor, out, count); });
}

// A row and the one below it: nearly the same positions, as lenses give them, or others altogether.
template <Positions draw>
void draw_two_rows(KernelCall& call, float* upper, float* lower, int count, const Axis (&axes)[2]) {
  draw(call, upper, count, 2, axes);
  if (call.number(0, 3) == 0) return draw(call, lower, count, 2, axes);
  const float shifts[2] = {call.real(-1.2f, 1.2f), call.real(-1.2f, 1.2f)};
  for (int i = 0; i < 2 * count; ++i) lower[i] = reflect(upper[i] + shifts[i % 2], axes[i % 2].last);
}

template <Positions draw>
void call_pair(KernelCall& call, SampleRowPair* sample) {
  const int count = call.size(), y_factor = call.number(1, 2);
  const Plane luma = any_plane(call, 1);
  // Just what the luma's last column and last row but one make of it.
  const Plane chroma = make_plane(call, (luma.width - 1) / 2 + 2, (luma.height - 2) / y_factor + 2, 2);
  float* upper = call.input<float>(static_cast<std::size_t>(2 * count), 0, 0);
  float* lower = call.input<float>(static_cast<std::size_t>(2 * count), 0, 0);
  draw_two_rows<draw>(call, upper, lower, count, {{1.0f, before(luma.width)}, {1.0f, before(luma.height - 1)}});
  const SampleDestination to{call.output<uint8_t>(static_cast<std::size_t>(count)),
                             call.output<uint8_t>(static_cast<std::size_t>(count)),
                             call.output<uint8_t>(static_cast<std::size_t>(count / 2 * 2))};
  const SampleSource source{luma.first, chroma.first, luma.stride, chroma.stride};
  call.run([&] { sample(upper, lower, source, static_cast<float>(y_factor), to, count); });
}

// What a lens and a panorama of twice its picture's width make of a row.
void draw_lens_row(float* entries, int floats, int step) {
  for (int i = 0; i + 1 < floats; i += step) {
    const float x = static_cast<float>(i / 2);
    entries[i] = 20.0f + 0.9f * x;
    entries[i + 1] = 60.0f + 40.0f * std::sin(0.005f * x);
  }
}

void call_lens_luma(KernelCall& call, SampleLumaRow* sample) {
  const int count = call.size(), width = 32 + count;
  const uint8_t* plane = call.input<uint8_t>(static_cast<std::size_t>(width * 110), 0, 255);
  float* entries = call.input<float>(static_cast<std::size_t>(2 * count), 0, 0);
  draw_lens_row(entries, 2 * count, 2);
  uint8_t* out = call.output<uint8_t>(static_cast<std::size_t>(count));
  call.run([&] { sample(entries, plane, width, out, count); });
}

void call_lens_chroma(KernelCall& call, SampleChromaRow* sample) {
  const int count = call.size(), width = 32 + 2 * count, floats = std::max(0, 4 * count - 2);
  const uint8_t* plane = call.input<uint8_t>(static_cast<std::size_t>(width * 60), 0, 255);
  float* entries = call.input<float>(static_cast<std::size_t>(floats), 0, 0);
  draw_lens_row(entries, floats, 4);
  uint8_t* out = call.output<uint8_t>(static_cast<std::size_t>(2 * count));
  call.run([&] { sample(entries, plane, width, 2.0f, out, count); });
}

void call_lens_pair(KernelCall& call, SampleRowPair* sample) {
  const int count = call.size(), width = 32 + count;
  const uint8_t* luma = call.input<uint8_t>(static_cast<std::size_t>(width * 110), 0, 255);
  const uint8_t* chroma = call.input<uint8_t>(static_cast<std::size_t>((width + 2) * 60), 0, 255);
  float* entries = call.input<float>(static_cast<std::size_t>(4 * count), 0, 0);
  float* lower = entries + 2 * count;
  draw_lens_row(entries, 2 * count, 2);
  for (int i = 0; i < 2 * count; ++i) lower[i] = entries[i] + (i % 2 == 0 ? 0.1f : 0.9f);
  const SampleDestination to{call.output<uint8_t>(static_cast<std::size_t>(count)),
                             call.output<uint8_t>(static_cast<std::size_t>(count)),
                             call.output<uint8_t>(static_cast<std::size_t>(count / 2 * 2))};
  call.run([&] { sample(entries, lower, {luma, chroma, width, width + 2}, 2.0f, to, count); });
}

}  // namespace

std::vector<Kernel> remap_kernels() {
  return {make_kernel("sample luma row", kSampleLumaRow, call_lens_luma),
          make_kernel("sample luma row, smooth", kSampleLumaRow, call_luma<draw_smooth>),
          make_kernel("sample luma row, scattered", kSampleLumaRow, call_luma<draw_scattered>),
          make_kernel("sample luma row, odd", kSampleLumaRow, call_luma<draw_odd>),
          make_kernel("sample chroma row", kSampleChromaRow, call_lens_chroma, 960),
          make_kernel("sample chroma row, smooth", kSampleChromaRow, call_chroma<draw_smooth>, 960),
          make_kernel("sample chroma row, scattered", kSampleChromaRow, call_chroma<draw_scattered>, 960),
          make_kernel("sample chroma row, odd", kSampleChromaRow, call_chroma<draw_odd>, 960),
          make_kernel("sample row pair", kSampleRowPair, call_lens_pair),
          make_kernel("sample row pair, smooth", kSampleRowPair, call_pair<draw_smooth>),
          make_kernel("sample row pair, scattered", kSampleRowPair, call_pair<draw_scattered>),
          make_kernel("sample row pair, odd", kSampleRowPair, call_pair<draw_odd>)};
}

}  // namespace biseam::test
