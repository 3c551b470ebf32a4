#include "ring/combine_rows.hpp"

#include <cstddef>

#include "base/loop_versions.hpp"
#include "ring/fine.hpp"

namespace biseam::ring {

namespace {

// Sums of a sample and a correction lie within 17 bits, weighed by up to 256 within 26.
BISEAM_LOOP int32_t stored(int32_t fine, int shift, int32_t highest) {
  const int32_t code = (fine + (1 << (shift - 1))) >> shift;
  return code < 0 ? 0 : code > highest ? highest : code;
}

BISEAM_LOOP int32_t corrected(FineRow row, ptrdiff_t i) { return int32_t{row.samples[i]} + row.corrections[i]; }

BISEAM_LOOP int32_t mixed(FineRow row0, FineRow row1, int32_t weight, ptrdiff_t i) {
  return corrected(row0, i) * (256 - weight) + corrected(row1, i) * weight;
}

constexpr int kByteShift = kFineBits - 8;

// A row between two rows of anchors.
struct BetweenRows {
  const int32_t *upper, *lower;
  int32_t above, below;  // weights

  BISEAM_LOOP BetweenRows(const AnchorBand& band, int row) noexcept
      : upper(band.values[row >> kAnchorBits]),
        lower(upper + kBlockWidth),
        above(kAnchorSpacing - (row & (kAnchorSpacing - 1))),
        below(row & (kAnchorSpacing - 1)) {}

  BISEAM_LOOP int32_t operator[](ptrdiff_t i) const noexcept { return (upper[i] * above + lower[i] * below + 8) >> 4; }
};

template <class Sample, int channels, bool edge>
BISEAM_LOOP void store_corrected_row(const CorrectedRows& rows, Storage storage, int row, Sample* out) noexcept {
  const int16_t* const from = rows.samples.first + row * rows.samples.stride;
  const BetweenRows first(*rows.corrections[0], rows.first_row + row);
  const BetweenRows second(*rows.corrections[channels - 1], rows.first_row + row);
  const BetweenRows across(edge ? *rows.across : *rows.corrections[0], rows.first_row + row);
  const int shift = sizeof(Sample) == 1 ? kByteShift : kFineBits - storage.bits, up = sizeof(Sample) == 1 ? 0 : storage.shift;
  const int32_t highest = sizeof(Sample) == 1 ? 255 : (1 << storage.bits) - 1, low = rows.low, high = rows.high;
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
    if (rows.across != nullptr) {
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

BISEAM_LOOP void mix_bytes(FineRow row0, FineRow row1, const int16_t* weights, uint8_t* out, int count) noexcept {
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    out[i] = static_cast<uint8_t>(stored(mixed(row0, row1, weights[i], i), kByteShift + 8, 255));
  }
}

BISEAM_LOOP void mix_words(FineRow row0, FineRow row1, const int16_t* weights, Storage storage, uint16_t* out,
                           int count) noexcept {
  const int shift = kFineBits - storage.bits + 8;
  const int32_t highest = (1 << storage.bits) - 1;
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    out[i] = static_cast<uint16_t>(stored(mixed(row0, row1, weights[i], i), shift, highest) << storage.shift);
  }
}

}  // namespace

constinit const Variants<StoreCorrected> kStoreCorrectedBytes = loop_versions<store_corrected<uint8_t>, StoreCorrected>;
constinit const Variants<StoreCorrected> kStoreCorrectedWords = loop_versions<store_corrected<uint16_t>, StoreCorrected>;
constinit const Variants<StoreFineBytes> kStoreFineBytes = loop_versions<store_fine_bytes, StoreFineBytes>;
constinit const Variants<StoreWords> kStoreWords = loop_versions<store_words, StoreWords>;
constinit const Variants<MixBytes> kMixBytes = loop_versions<mix_bytes, MixBytes>;
constinit const Variants<MixWords> kMixWords = loop_versions<mix_words, MixWords>;

}  // namespace biseam::ring
