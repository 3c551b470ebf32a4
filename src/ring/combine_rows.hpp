// The last step inside the ring: from fine samples of the lenses and their corrections to samples of the panorama.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/variants.hpp"
#include "ring/anchors.hpp"

namespace biseam::ring {

// How fine samples, codes x 2^(14 - bits), become stored ones.
struct Storage {
  int bits, shift;  // see SampleSource
};

// One lens's fine samples and what the low band adds to them.  The channels of pairs are taken one after the other, as they
// lie.
struct FineRow {
  const int16_t* samples;
  const int32_t* corrections;
};

// out = sample + correction, rounded half up, clamped.
using StoreWords = void(FineRow row, Storage storage, uint16_t* out, int count) noexcept;

// Rows of samples without a correction.
struct FineSamples {
  const int16_t* first;
  ptrdiff_t stride;  // samples
  int columns, rows;
};
using StoreFineBytes = void(const FineSamples& samples, uint8_t* out, ptrdiff_t stride) noexcept;

// Beyond which nothing is corrected.
struct CorrectedEdge {
  const AnchorBand* across;  // where samples lie across the ring; null: within
  int32_t low, high;
};

// Columns and rows of a block, and their corrections between anchors.
struct CorrectedRows {
  FineSamples samples;               // columns: samples or pairs
  int first_column, first_row;       // of the block's
  const AnchorBand* corrections[2];  // by channel; one alone: the second is null
  CorrectedEdge edge;
};
// stride: bytes.
using StoreCorrected = void(const CorrectedRows& rows, Storage storage, uint8_t* out, ptrdiff_t stride) noexcept;

// The same of both lenses mixed by how far samples are from the seam.
struct MixedRows {
  FineSamples samples[2];  // of as many columns and rows
  int first_column, first_row;
  const AnchorBand* corrections[2][2];  // by lens and channel
  CorrectedEdge edge;
  const AnchorBand* distances;
  int32_t ramp;  // across the seam, as the distances: at least 16
};
using MixCorrected = void(const MixedRows& rows, Storage storage, uint8_t* out, ptrdiff_t stride) noexcept;

extern constinit const Variants<StoreCorrected> kStoreCorrectedBytes, kStoreCorrectedWords;
extern constinit const Variants<StoreWords> kStoreWords;
extern constinit const Variants<StoreFineBytes> kStoreFineBytes;
extern constinit const Variants<MixCorrected> kMixCorrectedBytes, kMixCorrectedWords;

}  // namespace biseam::ring
