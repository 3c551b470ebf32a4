#include "ring/sample/sample_row.hpp"

#include <algorithm>
#include <cstring>

#include "ring/sample/sample_row_kernels.hpp"

namespace biseam::ring {

namespace {

int32_t value_at(const SampleSource& source, int column, int row, int component) noexcept {
  const int x = std::clamp(column, 0, source.width - 1), y = std::clamp(row, 0, source.height - 1);
  const int components = is_pairs(source.type) ? 2 : 1, sample_bytes = is_words(source.type) ? 2 : 1;
  const uint8_t* at = source.first + y * source.stride + static_cast<std::ptrdiff_t>(x * components + component) * sample_bytes;
  if (sample_bytes == 1) return *at;
  uint16_t word;
  std::memcpy(&word, at, sizeof word);
  return std::min(word >> source.shift, (1 << source.bits) - 1);
}

// Fits 16 bits: at most 1.5 * 2^14.
int32_t across(const SampleJob& job, const AxisPlace& place, int row, int component) noexcept {
  const int shift = across_shift(job.source);
  int32_t sum = 1 << (shift - 1);
  for (int k = 0; k < job.across->taps; ++k) {
    const int32_t weight = job.across->words[place.phase * job.across->padded_taps + k];
    sum += weight * value_at(job.source, place.first + k, row, component);
  }
  return sum >> shift;
}

int32_t sample(const SampleJob& job, const AxisPlace& column, const AxisPlace& row, int component) noexcept {
  int32_t sum = 0;
  for (int k = 0; k < job.down->taps; ++k) {
    const int32_t weight = job.down->words[row.phase * job.down->padded_taps + k];
    sum += weight * across(job, column, row.first + k, component);
  }
  return Finish(job)(sum);
}

void store(const SampleJob& job, int32_t value, void* destination, int index) noexcept {
  if (!is_words(job.source.type) && job.output == SampleOutput::samples) {
    static_cast<uint8_t*>(destination)[index] = static_cast<uint8_t>(value);
  } else {
    const auto word = static_cast<uint16_t>(value);
    std::memcpy(static_cast<uint8_t*>(destination) + std::ptrdiff_t{2} * index, &word, sizeof word);
  }
}

}  // namespace

void sample_row_scalar(const SampleJob& job, const int32_t* x, const int32_t* y, void* destination, int count) noexcept {
  const int components = is_pairs(job.source.type) ? 2 : 1;
  for (int i = 0; i < count; ++i) {
    const AxisPlace column = place_on(*job.across, x[i]), row = place_on(*job.down, y[i]);
    for (int c = 0; c < components; ++c) store(job, sample(job, column, row, c), destination, i * components + c);
  }
}

void sample_rest(SampleVectors* sample, int samples, const SampleJob& job, const int32_t* x, const int32_t* y,
                 uint8_t* destination, int count) noexcept {
  constexpr int kMost = 16, kMostBytes = 4;
  if (count <= 0) return;
  int32_t last_x[kMost], last_y[kMost];
  uint8_t results[kMost * kMostBytes];
  for (int i = 0; i < samples; ++i) last_x[i] = x[std::min(i, count - 1)], last_y[i] = y[std::min(i, count - 1)];
  sample(job, last_x, last_y, results, samples);
  std::memcpy(destination, results, static_cast<std::size_t>(count * output_bytes_of(job.source.type, job.output)));
}

namespace {

template <SampleRow row>
void sample_each_row(const SampleJob& job, const SampleRows& rows) noexcept {
  for (int i = 0; i < rows.rows; ++i) {
    row(job, rows.x + i * rows.pitch, rows.y + i * rows.pitch, rows.results + i * rows.stride, rows.columns);
  }
}

#if defined(BISEAM_X86_64)
void sample_rows_avx512(const SampleJob& job, const SampleRows& rows) noexcept {
  SampleAll* const in_tiles = is_words(job.source.type) ? sample_word_tiles_avx512 : sample_tiles_avx512;
  (are_tiles(job) ? in_tiles : sample_each_row<sample_row_avx512>)(job, rows);
}
#endif

}  // namespace

constexpr Variants<SampleAll> kSampleRows{sample_each_row<sample_row_scalar>, BISEAM_ON_ARM(sample_each_row<sample_row_neon>),
                                          BISEAM_ON_X86_64(sample_each_row<sample_row_avx2>),
                                          BISEAM_ON_X86_64(sample_rows_avx512)};

void sample_rows(const SampleJob& job, const SampleRows& rows) noexcept { kSampleRows.best()(job, rows); }

}  // namespace biseam::ring
