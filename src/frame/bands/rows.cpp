#include "frame/bands/rows.hpp"

#include "base/apart.hpp"
#include "frame/bands/integer_formulas.hpp"
#include "frame/bands/rows_kernels.hpp"

namespace biseam {

namespace {

// Rounds through single precision, then truncates half up and clamps.  |value| below 2^26.
uint8_t to_byte(double value) noexcept {
  const int rounded = static_cast<int>(static_cast<double>(static_cast<float>(value)) + 0.5);
  return static_cast<uint8_t>(rounded < 0 ? 0 : rounded > 255 ? 255 : rounded);
}

// What one chroma pair adds to the luma of all its pixels.
struct ChromaTerms {
  double red, green_u, green_v, blue;
};

ChromaTerms terms_of(int u, int v) noexcept {
  return {1.402 * (v - 128), 0.3441 * (u - 128), 0.7141 * (v - 128), 1.772 * (u - 128)};
}

template <class Sample>
void store_pixel(int luma, const ChromaTerms& terms, Sample* rgb) noexcept {
  rgb[0] = to_byte(luma + terms.red);
  rgb[1] = to_byte(luma - terms.green_u - terms.green_v);
  rgb[2] = to_byte(luma + terms.blue);
}

int32_t wrapping_sum(int32_t a, int32_t b) noexcept {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

ChromaPair chroma_of(double red, double green, double blue) noexcept {
  return {to_byte(-0.1687 * red - 0.3313 * green + 0.5 * blue + 128.0),
          to_byte(0.5 * red - 0.4187 * green - 0.0813 * blue + 128.0)};
}

float mean_of_four(int32_t a, int32_t b, int32_t c, int32_t d) noexcept {
  const int32_t sum = wrapping_sum(wrapping_sum(a, b), wrapping_sum(c, d));
  return static_cast<float>(sum >> kFractionBits) * 0.25f;
}

float mean_of_two(int32_t a, int32_t b) noexcept { return static_cast<float>(wrapping_sum(a, b) >> kFractionBits) * 0.5f; }

template <class Sample>
void convert_420(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, Sample* rgb0, Sample* rgb1,
                 int pairs) noexcept {
  for (int i = 0; i < pairs; ++i) {
    const ChromaTerms terms = terms_of(chroma[2 * i], chroma[2 * i + 1]);
    store_pixel(luma0[2 * i], terms, rgb0 + 6 * i);
    store_pixel(luma0[2 * i + 1], terms, rgb0 + 6 * i + 3);
    store_pixel(luma1[2 * i], terms, rgb1 + 6 * i);
    store_pixel(luma1[2 * i + 1], terms, rgb1 + 6 * i + 3);
  }
}

template <class Sample>
void convert_422(const uint8_t* luma, const uint8_t* chroma, Sample* rgb, int pairs) noexcept {
  for (int i = 0; i < pairs; ++i) {
    const ChromaTerms terms = terms_of(chroma[2 * i], chroma[2 * i + 1]);
    store_pixel(luma[2 * i], terms, rgb + 6 * i);
    store_pixel(luma[2 * i + 1], terms, rgb + 6 * i + 3);
  }
}

template <class Sample>
Memory pixels(const Sample* samples, int pairs, int samples_per_pair) noexcept {
  return {samples, static_cast<size_t>(pairs) * static_cast<size_t>(samples_per_pair) * sizeof(Sample)};
}

// The versions for a type of sample.
const auto& yuv420_versions(const int32_t*) noexcept { return kYuv420RowsToIntegerRgb; }
const auto& yuv420_versions(const uint8_t*) noexcept { return kYuv420RowsToByteRgb; }
const auto& yuv422_versions(const int32_t*) noexcept { return kYuv422RowToIntegerRgb; }
const auto& yuv422_versions(const uint8_t*) noexcept { return kYuv422RowToByteRgb; }

}  // namespace

// The definitions.

void yuv420_rows_to_integer_rgb_scalar(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, int32_t* rgb0,
                                       int32_t* rgb1, int pairs) noexcept {
  convert_420(luma0, luma1, chroma, rgb0, rgb1, pairs);
}

void yuv420_rows_to_byte_rgb_scalar(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, uint8_t* rgb0,
                                    uint8_t* rgb1, int pairs) noexcept {
  convert_420(luma0, luma1, chroma, rgb0, rgb1, pairs);
}

void yuv422_row_to_integer_rgb_scalar(const uint8_t* luma, const uint8_t* chroma, int32_t* rgb, int pairs) noexcept {
  convert_422(luma, chroma, rgb, pairs);
}

void yuv422_row_to_byte_rgb_scalar(const uint8_t* luma, const uint8_t* chroma, uint8_t* rgb, int pairs) noexcept {
  convert_422(luma, chroma, rgb, pairs);
}

void rgb_row_to_luma_scalar(const int32_t* rgb, uint8_t* luma, int count) noexcept {
  for (int i = 0; i < count; ++i) {
    const int32_t* p = rgb + 3 * i;
    luma[i] = to_byte(0.299 * (p[0] >> kFractionBits) + 0.587 * (p[1] >> kFractionBits) + 0.114 * (p[2] >> kFractionBits));
  }
}

ChromaPair chroma420_of(const int32_t* p00, const int32_t* p10, const int32_t* p01, const int32_t* p11) noexcept {
  return chroma_of(mean_of_four(p00[0], p10[0], p01[0], p11[0]), mean_of_four(p00[1], p10[1], p01[1], p11[1]),
                   mean_of_four(p00[2], p10[2], p01[2], p11[2]));
}

ChromaPair chroma422_of(const int32_t* p0, const int32_t* p1) noexcept {
  return chroma_of(mean_of_two(p0[0], p1[0]), mean_of_two(p0[1], p1[1]), mean_of_two(p0[2], p1[2]));
}

void rgb_rows_to_chroma420_scalar(const int32_t* rgb0, const int32_t* rgb1, uint8_t* chroma, int pairs) noexcept {
  for (int i = 0; i < pairs; ++i) {
    const ChromaPair pair = chroma420_of(rgb0 + 6 * i, rgb0 + 6 * i + 3, rgb1 + 6 * i, rgb1 + 6 * i + 3);
    chroma[2 * i] = pair.u;
    chroma[2 * i + 1] = pair.v;
  }
}

void rgb_row_to_chroma422_scalar(const int32_t* rgb, uint8_t* chroma, int pairs) noexcept {
  for (int i = 0; i < pairs; ++i) {
    const ChromaPair pair = chroma422_of(rgb + 6 * i, rgb + 6 * i + 3);
    chroma[2 * i] = pair.u;
    chroma[2 * i + 1] = pair.v;
  }
}

// Which version: the definition where rows overlap.

template <class Sample>
void yuv_to_rgb_pixel(int luma, int u, int v, Sample* rgb) noexcept {
  store_pixel(luma, terms_of(u, v), rgb);
}

template <class Sample>
void yuv420_rows_to_rgb(const uint8_t* luma0, const uint8_t* luma1, const uint8_t* chroma, Sample* rgb0, Sample* rgb1,
                        int pairs) noexcept {
  if (pairs < 1) return;
  const Memory out0 = pixels(rgb0, pairs, 6), out1 = pixels(rgb1, pairs, 6);
  const Memory in0 = pixels(luma0, pairs, 2), in1 = pixels(luma1, pairs, 2), uv = pixels(chroma, pairs, 2);
  const bool blocks = apart(out0, out1, in0, in1, uv) && apart(out1, in0, in1, uv);
  const auto& versions = yuv420_versions(rgb0);
  (blocks ? versions.best() : versions.scalar)(luma0, luma1, chroma, rgb0, rgb1, pairs);
}

template <class Sample>
void yuv422_row_to_rgb(const uint8_t* luma, const uint8_t* chroma, Sample* rgb, int pairs) noexcept {
  if (pairs < 1) return;
  const bool blocks = apart(pixels(rgb, pairs, 6), pixels(luma, pairs, 2), pixels(chroma, pairs, 2));
  const auto& versions = yuv422_versions(rgb);
  (blocks ? versions.best() : versions.scalar)(luma, chroma, rgb, pairs);
}

template void yuv_to_rgb_pixel(int, int, int, int32_t*) noexcept;
template void yuv_to_rgb_pixel(int, int, int, uint8_t*) noexcept;
template void yuv420_rows_to_rgb(const uint8_t*, const uint8_t*, const uint8_t*, int32_t*, int32_t*, int) noexcept;
template void yuv420_rows_to_rgb(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint8_t*, int) noexcept;
template void yuv422_row_to_rgb(const uint8_t*, const uint8_t*, int32_t*, int) noexcept;
template void yuv422_row_to_rgb(const uint8_t*, const uint8_t*, uint8_t*, int) noexcept;

void rgb_row_to_luma(const int32_t* rgb, uint8_t* luma, int count) noexcept {
  if (count < 1) return;
  const bool blocks = apart(pixels(luma, count, 1), pixels(rgb, count, 3));
  (blocks ? kRgbRowToLuma.best() : kRgbRowToLuma.scalar)(rgb, luma, count);
}

void rgb_rows_to_chroma420(const int32_t* rgb0, const int32_t* rgb1, uint8_t* chroma, int pairs) noexcept {
  if (pairs < 1) return;
  const bool blocks = apart(pixels(chroma, pairs, 2), pixels(rgb0, pairs, 6), pixels(rgb1, pairs, 6));
  (blocks ? kRgbRowsToChroma420.best() : kRgbRowsToChroma420.scalar)(rgb0, rgb1, chroma, pairs);
}

void rgb_row_to_chroma422(const int32_t* rgb, uint8_t* chroma, int pairs) noexcept {
  if (pairs < 1) return;
  const bool blocks = apart(pixels(chroma, pairs, 2), pixels(rgb, pairs, 6));
  (blocks ? kRgbRowToChroma422.best() : kRgbRowToChroma422.scalar)(rgb, chroma, pairs);
}

}  // namespace biseam
