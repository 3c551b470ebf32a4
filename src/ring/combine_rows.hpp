// The last step inside the ring: from fine samples of the lenses and their corrections to samples of the panorama.
#pragma once

#include <cstdint>

#include "base/variants.hpp"

namespace biseam::ring {

// How fine samples, codes x 2^(14 - bits), become stored ones.
struct Storage {
  int bits, shift;  // see SampleSource
};

// One lens's fine samples and what the low band adds to them, for one channel of a row.  Sample i is at samples[i * step], its
// correction at corrections[i].
struct FineRow {
  const int16_t* samples;
  const int32_t* corrections;
};

// out[i * step] = sample + correction, rounded half up, clamped; step: 1, or 2 for one channel of pairs.
using StoreBytes = void(FineRow row, int step, uint8_t* out, int count) noexcept;
using StoreWords = void(FineRow row, int step, Storage storage, uint16_t* out, int count) noexcept;

// The same of both lenses mixed: weights of lens 1, 0 to 256.
using MixBytes = void(FineRow row0, FineRow row1, const int16_t* weights, int step, uint8_t* out, int count) noexcept;
using MixWords = void(FineRow row0, FineRow row1, const int16_t* weights, int step, Storage storage, uint16_t* out,
                      int count) noexcept;

extern constinit const Variants<StoreBytes> kStoreBytes;
extern constinit const Variants<StoreWords> kStoreWords;
extern constinit const Variants<MixBytes> kMixBytes;
extern constinit const Variants<MixWords> kMixWords;

}  // namespace biseam::ring
