#pragma once

#include <cstddef>
#include <cstdint>

#include "ring/sample/axis_weights.hpp"

// Samples of a picture at arbitrary positions: across first, then down, each sum rounded once.
namespace biseam::ring {

// What lies side by side in a row.  Interleaved chroma is sampled as pairs.
enum class SampleType : uint8_t { bytes, byte_pairs, words, word_pairs };

constexpr bool is_pairs(SampleType type) { return type == SampleType::byte_pairs || type == SampleType::word_pairs; }
constexpr bool is_words(SampleType type) { return type >= SampleType::words; }
constexpr int bytes_of(SampleType type) { return (is_words(type) ? 2 : 1) * (is_pairs(type) ? 2 : 1); }

// A plane of a picture.  A sample's value is what is left after shift lower bits have gone, at most 2^bits - 1.
struct SampleSource {
  const uint8_t* first;   // of the upper row; words need not be aligned
  std::ptrdiff_t stride;  // bytes from a row to the one below, of any sign
  int width, height;      // in samples, or in pairs; at least 1, at most 16384
  SampleType type;
  uint8_t bits;   // 8 for bytes, 9 to 12 for words
  uint8_t shift;  // 0 for bytes; for words bits + shift <= 16
};

// samples: of the source's type, rounded, clamped to [0, 2^bits - 1] and shifted to where the source has them.
// fine: int16_t, value * 2^(14 - bits), rounded, not clamped: from -10240 to 26624.
enum class SampleOutput : uint8_t { samples, fine };

struct SampleJob {
  SampleSource source;
  const AxisWeights* across;
  const AxisWeights* down;
  SampleOutput output;
};

// The size of one result, a pair counted as one.
constexpr int output_bytes_of(SampleType type, SampleOutput output) {
  return (is_words(type) || output == SampleOutput::fine ? 2 : 1) * (is_pairs(type) ? 2 : 1);
}

// Rows of positions and of the samples at them.  x and y are in 1/65536 sample, integers are middles of samples; they may be
// anything (near the ends of 32 bits they wrap).
struct SampleRows {
  const int32_t *x, *y;
  std::ptrdiff_t pitch;   // positions from a row to the next
  uint8_t* results;       // need not be aligned; apart from everything that is read
  std::ptrdiff_t stride;  // bytes from a row of results to the next, of any sign
  int columns, rows;
};

// A sample for each position.  Taps outside the picture are its nearest samples; nothing but the picture's samples is read: no
// padding.
void sample_rows(const SampleJob& job, const SampleRows& rows) noexcept;

}  // namespace biseam::ring
