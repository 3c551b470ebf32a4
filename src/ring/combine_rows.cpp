#include "ring/combine_rows.hpp"

#include <cstddef>
#include <type_traits>

#include "base/loop_versions.hpp"
#include "ring/fine.hpp"

namespace biseam::ring {

namespace {

// Sums of a sample and a correction lie within 17 bits, weighed by up to 256 within 26.
BISEAM_TERM int32_t stored(int32_t fine, int shift, int32_t highest) {
  const int32_t code = (fine + (1 << (shift - 1))) >> shift;
  return code < 0 ? 0 : code > highest ? highest : code;
}

BISEAM_TERM int32_t corrected(FineRow row, ptrdiff_t i) { return int32_t{row.samples[i]} + row.corrections[i]; }

constexpr int kByteShift = kFineBits - 8;

// A row between two rows of anchors.
struct BetweenRows {
  const int32_t *upper, *lower;
  int32_t above, below;  // weights

  BISEAM_LOOP BetweenRows(const AnchorBand& band, int column, int row) noexcept
      : upper(band.values[row >> kAnchorBits] + column),
        lower(upper + kBlockWidth),
        above(kAnchorSpacing - (row & (kAnchorSpacing - 1))),
        below(row & (kAnchorSpacing - 1)) {}

  BISEAM_TERM int32_t operator[](ptrdiff_t i) const noexcept { return (upper[i] * above + lower[i] * below + 8) >> 4; }
};

template <class Sample, int channels, bool edge>
BISEAM_LOOP void store_corrected_row(const CorrectedRows& rows, Storage storage, int row, Sample* out) noexcept {
  const int16_t* const from = rows.samples.first + row * rows.samples.stride;
  const int at = rows.first_row + row;
  const BetweenRows first(*rows.corrections[0], rows.first_column, at);
  const BetweenRows second(*rows.corrections[channels - 1], rows.first_column, at);
  const BetweenRows across(edge ? *rows.edge.across : *rows.corrections[0], rows.first_column, at);
  const int shift = sizeof(Sample) == 1 ? kByteShift : kFineBits - storage.bits, up = sizeof(Sample) == 1 ? 0 : storage.shift;
  const int32_t highest = sizeof(Sample) == 1 ? 255 : (1 << storage.bits) - 1, low = rows.edge.low, high = rows.edge.high;
  const int columns = rows.samples.columns;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < columns; ++i) {
    // Bits rather than branches, which would keep pairs from becoming vectors.
    const int32_t place = edge ? across[i] : 0, within = edge ? -static_cast<int32_t>((place >= low) & (place <= high)) : -1;
    out[channels * i] = static_cast<Sample>(stored(from[channels * i] + (first[i] & within), shift, highest) << up);
    if constexpr (channels == 2) {
      out[2 * i + 1] = static_cast<Sample>(stored(from[2 * i + 1] + (second[i] & within), shift, highest) << up);
    }
  }
}

template <class Sample, int channels>
BISEAM_LOOP void store_corrected_rows(const CorrectedRows& rows, Storage storage, uint8_t* out, ptrdiff_t stride) noexcept {
  for (int row = 0; row < rows.samples.rows; ++row) {
    Sample* const to = reinterpret_cast<Sample*>(out + row * stride);
    if (rows.edge.across != nullptr) {
      store_corrected_row<Sample, channels, true>(rows, storage, row, to);
    } else {
      store_corrected_row<Sample, channels, false>(rows, storage, row, to);
    }
  }
}

template <class Sample>
BISEAM_LOOP void store_corrected(const CorrectedRows& rows, Storage storage, uint8_t* out, ptrdiff_t stride) noexcept {
  if (rows.corrections[1] != nullptr) {
    store_corrected_rows<Sample, 2>(rows, storage, out, stride);
  } else {
    store_corrected_rows<Sample, 1>(rows, storage, out, stride);
  }
}

// In 16 bits: what is beyond 255 is so with 32 less, too.
BISEAM_LOOP void store_fine_bytes(const FineSamples& samples, uint8_t* out, ptrdiff_t stride) noexcept {
  const int columns = samples.columns;
  for (int row = 0; row < samples.rows; ++row, out += stride) {
    const int16_t* const from = samples.first + row * samples.stride;
    BISEAM_TURNS_APART
    for (ptrdiff_t i = 0; i < columns; ++i) {
      const int16_t low = from[i] < 0 ? int16_t{0} : from[i], held = low > 255 << 6 ? int16_t{255 << 6} : low;
      out[i] = static_cast<uint8_t>(static_cast<int16_t>(held + 32) >> kByteShift);
    }
  }
}

BISEAM_LOOP void store_words(FineRow row, Storage storage, uint16_t* out, int count) noexcept {
  const int shift = kFineBits - storage.bits;
  const int32_t highest = (1 << storage.bits) - 1;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    out[i] = static_cast<uint16_t>(stored(corrected(row, i), shift, highest) << storage.shift);
  }
}

// Weights of lens 1, 0 to 256, from distances.  Those are in 1/4096 of a sample here; a product of one within the ramp and the
// slope is at most 2^28.
struct Weights {
  int32_t half, across, slope;

  BISEAM_LOOP explicit Weights(int32_t ramp) noexcept
      : half(ramp >> 1), across(ramp >> 4), slope(((1 << 28) + across / 2) / across) {}

  BISEAM_LOOP int32_t at(int32_t distance) const noexcept {
    const int32_t past = (distance + half) >> 4, within = past < 0 ? 0 : past > across ? across : past;
    return (within * slope + (1 << 19)) >> 20;
  }
};

// Most often a seam's columns are a multiple of so many.
constexpr int kPiece = 16;

template <class Sample, int channels, bool edge, class Length>
BISEAM_LOOP void mix_columns(const MixedRows& rows, const Weights& weights, Storage storage, int row, int first, Length length,
                             Sample* out) noexcept {
  const int count = length, at = rows.first_row + row, column = rows.first_column + first;
  const int16_t *const from0 = rows.samples[0].first + row * rows.samples[0].stride + channels * first,
                       *const from1 = rows.samples[1].first + row * rows.samples[1].stride + channels * first;
  const BetweenRows first0(*rows.corrections[0][0], column, at), first1(*rows.corrections[1][0], column, at);
  const BetweenRows second0(*rows.corrections[0][channels - 1], column, at);
  const BetweenRows second1(*rows.corrections[1][channels - 1], column, at);
  const BetweenRows distances(*rows.distances, column, at);
  const BetweenRows across(edge ? *rows.edge.across : *rows.distances, column, at);
  const Weights ramp = weights;
  const int shift = (sizeof(Sample) == 1 ? kByteShift : kFineBits - storage.bits) + 8;
  const int up = sizeof(Sample) == 1 ? 0 : storage.shift;
  const int32_t highest = sizeof(Sample) == 1 ? 255 : (1 << storage.bits) - 1, low = rows.edge.low, high = rows.edge.high;
  int32_t codes[channels * kPiece];
  BISEAM_TURNS_APART
  BISEAM_KEEP_LOOP
  for (int i = 0; i < count; ++i) {
    const int32_t place = edge ? across[i] : 0, within = edge ? -static_cast<int32_t>((place >= low) & (place <= high)) : -1;
    const int32_t weight = ramp.at(distances[i]), rest = 256 - weight;
    const int32_t sum =
        (from0[channels * i] + (first0[i] & within)) * rest + (from1[channels * i] + (first1[i] & within)) * weight;
    codes[channels * i] = stored(sum, shift, highest) << up;
    if constexpr (channels == 2) {
      const int32_t other =
          (from0[2 * i + 1] + (second0[i] & within)) * rest + (from1[2 * i + 1] + (second1[i] & within)) * weight;
      codes[2 * i + 1] = stored(other, shift, highest) << up;
    }
  }
  BISEAM_TURNS_APART
  BISEAM_KEEP_LOOP
  for (int i = 0; i < channels * count; ++i) out[i] = static_cast<Sample>(codes[i]);
}

template <class Sample, int channels, bool edge>
BISEAM_LOOP void mix_rows(const MixedRows& rows, Storage storage, uint8_t* out, ptrdiff_t stride) noexcept {
  const Weights weights(rows.ramp);
  const int columns = rows.samples[0].columns;
  for (int first = 0; first < columns; first += kPiece) {
    for (int row = 0; row < rows.samples[0].rows; ++row) {
      Sample* const to = reinterpret_cast<Sample*>(out + row * stride) + channels * first;
      if (columns - first >= kPiece) {
        mix_columns<Sample, channels, edge>(rows, weights, storage, row, first, std::integral_constant<int, kPiece>{}, to);
      } else {
        mix_columns<Sample, channels, edge>(rows, weights, storage, row, first, columns - first, to);
      }
    }
  }
}

template <class Sample, int channels>
BISEAM_LOOP void mix_channels(const MixedRows& rows, Storage storage, uint8_t* out, ptrdiff_t stride) noexcept {
  if (rows.edge.across != nullptr) {
    mix_rows<Sample, channels, true>(rows, storage, out, stride);
  } else {
    mix_rows<Sample, channels, false>(rows, storage, out, stride);
  }
}

template <class Sample>
BISEAM_LOOP void mix(const MixedRows& rows, Storage storage, uint8_t* out, ptrdiff_t stride) noexcept {
  if (rows.corrections[0][1] != nullptr) {
    mix_channels<Sample, 2>(rows, storage, out, stride);
  } else {
    mix_channels<Sample, 1>(rows, storage, out, stride);
  }
}

}  // namespace

constinit const Variants<StoreCorrected> kStoreCorrectedBytes = loop_versions<store_corrected<uint8_t>, StoreCorrected>;
constinit const Variants<StoreCorrected> kStoreCorrectedWords = loop_versions<store_corrected<uint16_t>, StoreCorrected>;
constinit const Variants<StoreFineBytes> kStoreFineBytes = loop_versions<store_fine_bytes, StoreFineBytes>;
constinit const Variants<StoreWords> kStoreWords = loop_versions<store_words, StoreWords>;
constinit const Variants<MixCorrected> kMixCorrectedBytes = loop_versions<mix<uint8_t>, MixCorrected>;
constinit const Variants<MixCorrected> kMixCorrectedWords = loop_versions<mix<uint16_t>, MixCorrected>;

}  // namespace biseam::ring
