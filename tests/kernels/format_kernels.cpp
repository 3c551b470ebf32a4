#include <climits>

#include "frame/bands/to_rgb_rows.hpp"
#include "frame/bands/to_yuv_rows.hpp"
#include "kernels/kernels.hpp"

namespace biseam::test {

namespace {

uint8_t* any_bytes(KernelCall& call, int count) { return call.input<uint8_t>(static_cast<std::size_t>(count), 0, 255); }

void call_420_to_rgb(KernelCall& call, Yuv420RowsToRgb* convert) {
  const int pairs = call.size();
  const uint8_t *luma0 = any_bytes(call, 2 * pairs), *luma1 = any_bytes(call, 2 * pairs), *chroma = any_bytes(call, 2 * pairs);
  uint8_t* rgb0 = call.output<uint8_t>(static_cast<std::size_t>(6 * pairs));
  uint8_t* rgb1 = call.output<uint8_t>(static_cast<std::size_t>(6 * pairs));
  call.run([&] { convert(luma0, luma1, chroma, rgb0, rgb1, pairs); });
}

void call_422_to_rgb(KernelCall& call, Yuv422RowToRgb* convert) {
  const int pairs = call.size();
  const uint8_t *luma = any_bytes(call, 2 * pairs), *chroma = any_bytes(call, 2 * pairs);
  uint8_t* rgb = call.output<uint8_t>(static_cast<std::size_t>(6 * pairs));
  call.run([&] { convert(luma, chroma, rgb, pairs); });
}

// What blends give: 0 to 255 with six fractional bits, and overshoot.
constexpr int kLeast = -64 * 300, kMost = 64 * 555;

// Samples in a range, one in some replaced by any value.
int32_t* samples(KernelCall& call, int count, int least, int most, int one_in) {
  int32_t* all = call.input<int32_t>(static_cast<std::size_t>(count), least, most);
  for (int i = 0; one_in > 0 && i < count; ++i) {
    if (call.number(1, one_in) == 1) all[i] = call.number(INT_MIN, INT_MAX);
  }
  return all;
}

template <int least, int most, int one_in>
void call_luma(KernelCall& call, RgbRowToLuma* convert) {
  const int32_t* rgb = samples(call, 3 * call.size(), least, most, one_in);
  uint8_t* luma = call.output<uint8_t>(static_cast<std::size_t>(call.size()));
  call.run([&] { convert(rgb, luma, call.size()); });
}

template <int least, int most, int one_in>
void call_chroma420(KernelCall& call, RgbRowsToChroma420* convert) {
  const int32_t* rgb0 = samples(call, 6 * call.size(), least, most, one_in);
  const int32_t* rgb1 = samples(call, 6 * call.size(), least, most, one_in);
  uint8_t* chroma = call.output<uint8_t>(static_cast<std::size_t>(2 * call.size()));
  call.run([&] { convert(rgb0, rgb1, chroma, call.size()); });
}

template <int least, int most, int one_in>
void call_chroma422(KernelCall& call, RgbRowToChroma422* convert) {
  const int32_t* rgb = samples(call, 6 * call.size(), least, most, one_in);
  uint8_t* chroma = call.output<uint8_t>(static_cast<std::size_t>(2 * call.size()));
  call.run([&] { convert(rgb, chroma, call.size()); });
}

// The conversions to YUV of samples in a range, named after it.
template <int least, int most, int one_in = 0>
void add_to_yuv(std::vector<Kernel>& kernels, const std::string& content) {
  kernels.push_back(make_kernel("rgb to luma" + content, kRgbRowToLuma, call_luma<least, most, one_in>, 192, 1));
  kernels.push_back(
      make_kernel("rgb to chroma 4:2:0" + content, kRgbRowsToChroma420, call_chroma420<least, most, one_in>, 96, 4));
  kernels.push_back(
      make_kernel("rgb to chroma 4:2:2" + content, kRgbRowToChroma422, call_chroma422<least, most, one_in>, 96, 2));
}

// Around what a sample, or a sum of two or four, may be at most, where integers give way to the definition.
template <int limit>
void add_around(std::vector<Kernel>& kernels, const std::string& name) {
  add_to_yuv<limit - 3, limit + 2>(kernels, name + " or so");
  add_to_yuv<-limit - 3, -limit + 2>(kernels, name + " or so, negative");
  add_to_yuv<-limit, limit - 1>(kernels, name + " at most");
}

}  // namespace

std::vector<Kernel> format_kernels() {
  std::vector<Kernel> kernels = {make_kernel("yuv 4:2:0 to rgb", kYuv420RowsToRgb, call_420_to_rgb, 64, 4),
                                 make_kernel("yuv 4:2:2 to rgb", kYuv422RowToRgb, call_422_to_rgb, 64, 2)};
  add_to_yuv<kLeast, kMost>(kernels, "");
  add_to_yuv<kLeast, kMost, 100>(kernels, ", some huge");
  add_to_yuv<INT_MIN, INT_MAX>(kernels, ", any");
  add_around<1 << 21>(kernels, ", 2^21");
  add_around<1 << 20>(kernels, ", 2^20");
  add_around<1 << 19>(kernels, ", 2^19");
  return kernels;
}

}  // namespace biseam::test
