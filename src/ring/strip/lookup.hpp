#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

// What a frame reads from the strips, for count places of a panorama row: t and b in strip samples, Q16, sample (0, 0) at (0,
// 0). t is circular, in [-length, 2 length); b is held within the strip.

// Corrections, within 15 bits, between samples: linear either way, at 256 places, rounded once, halves up.
using LookUpCorrections = void(const int16_t* corrections, StripShape shape, const int32_t* t, const int32_t* b, int32_t* out,
                               int count) noexcept;

// The path of the seam as frames read it: length + 1 rows, Q16; the last is the first.
// Of this length across the seam (Q16 strip samples, in [2^12, 2^20]) weights run from 0 to kWeightOne.
struct SeamRamp {
  const int32_t* path;
  int length;
  int32_t across;
};

extern constinit const Variants<LookUpCorrections> kLookUpCorrections;

#if defined(BISEAM_X86_64)
BISEAM_AVX2 LookUpCorrections look_up_corrections_avx2;
#endif

}  // namespace biseam::ring
