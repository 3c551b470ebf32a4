#include "frame/remap/sample_row.hpp"

#include "base/truncate.hpp"
#include "frame/remap/sample_kernels.hpp"

namespace biseam {

namespace {

// A position split into the sample that is read and the fraction beyond.  The fraction of a negative coordinate stays negative.
struct Position {
  uint32_t column, row;
  float fx, fy;
};

Position split(float u, float v) noexcept {
  const uint32_t column = truncate_to_unsigned(u), row = truncate_to_unsigned(v);
  return {column, row, u - static_cast<float>(column), v - static_cast<float>(row)};
}

uint8_t low_byte(float value) noexcept { return static_cast<uint8_t>(truncate_to_unsigned(value)); }

}  // namespace

void sample_luma_row_scalar(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination,
                            int count) noexcept {
  for (int k = 0; k < count; ++k, entries += 2) {
    const auto [column, row, fx, fy] = split(entries[0], entries[1]);
    const uint8_t* pixel = locate(source, stride, row, column);
    const float upper = pixel[0], lower = pixel[stride], product = fx * fy;
    // Four bilinear weights on two pixels: their float rounding is part of the result.
    destination[k] =
        low_byte((fx - product) * upper + ((1.0f - fy) - (fx - product)) * upper + (fy - product) * lower + product * lower);
  }
}

void sample_chroma_row_scalar(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float x_factor,
                              float y_factor, uint8_t* destination, int count) noexcept {
  for (int k = 0; k < count; ++k, entries += 4, destination += 2) {
    const auto [column, row, fx, fy] = split(entries[0] / x_factor, entries[1] / y_factor);
    const uint8_t* upper = locate(source, stride, row, 2 * std::size_t{column});
    const uint8_t* lower = upper + stride;
    const float w10 = fx - fx * fy, w00 = (1.0f - fy) - w10, w01 = fy - fx * fy, w11 = fx * fy;
    for (int component = 0; component < 2; ++component) {
      destination[component] =
          low_byte(w00 * upper[component] + w10 * upper[component + 2] + w01 * lower[component] + w11 * lower[component + 2]);
    }
  }
}

constinit const Variants<SampleLumaRow> kSampleLumaRow{sample_luma_row_scalar, BISEAM_ON_ARM(sample_luma_row_neon),
                                                       BISEAM_ON_X86_64(sample_luma_row_avx2),
                                                       BISEAM_ON_X86_64(sample_luma_row_avx512)};
constinit const Variants<SampleChromaRow> kSampleChromaRow{sample_chroma_row_scalar, BISEAM_ON_ARM(sample_chroma_row_neon),
                                                           BISEAM_ON_X86_64(sample_chroma_row_avx2),
                                                           BISEAM_ON_X86_64(sample_chroma_row_avx512)};
constinit const Variants<SampleRowPair> kSampleRowPair{
    sample_rows_one_by_one<sample_luma_row_scalar, sample_chroma_row_scalar>,
    BISEAM_ON_ARM((sample_rows_one_by_one<sample_luma_row_neon, sample_chroma_row_neon>)),
    BISEAM_ON_X86_64((sample_rows_one_by_one<sample_luma_row_avx2, sample_chroma_row_avx2>)),
    BISEAM_ON_X86_64(sample_row_pair_avx512)};

void sample_luma_row(const float* entries, const uint8_t* source, std::ptrdiff_t stride, uint8_t* destination,
                     int count) noexcept {
  kSampleLumaRow.best()(entries, source, stride, destination, count);
}

void sample_chroma_row(const float* entries, const uint8_t* source, std::ptrdiff_t stride, float x_factor, float y_factor,
                       uint8_t* destination, int count) noexcept {
  kSampleChromaRow.best()(entries, source, stride, x_factor, y_factor, destination, count);
}

void sample_row_pair(const float* upper, const float* lower, const SampleSource& source, float y_factor,
                     const SampleDestination& to, int count) noexcept {
  kSampleRowPair.best()(upper, lower, source, y_factor, to, count);
}

}  // namespace biseam
