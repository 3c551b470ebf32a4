#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

// Pyramids over strips: circular in t, mirrored in b at the outermost samples (which are not repeated).  Samples within
// +-kMaxFine, or weights of 0 to kWeightOne.

inline constexpr int kWeightOne = 256;

// The next level, reduced(shape): weights 1 4 6 4 1 either way round every second sample, rounded once, halves up.
using ReduceLevel = void(const int16_t* fine, StripShape shape, int16_t* coarse) noexcept;

// detail = fine - expanded coarse, where coarse is of reduced(shape); expansion weighs 1 6 1 at even samples and 4 4 at odd
// ones either way, rounded once, halves up.
using SubtractExpanded = void(const int16_t* fine, const int16_t* coarse, StripShape shape, int16_t* detail) noexcept;

// sum = detail x weight / kWeightOne (rounded, halves up) + expanded coarse, held within 16 bits.  sum may be detail.  What
// coarse holds may be any 16-bit values.
using AddExpanded = void(const int16_t* detail, const int16_t* weights, const int16_t* coarse, StripShape shape,
                         int16_t* sum) noexcept;

extern constinit const Variants<ReduceLevel> kReduceLevel;
extern constinit const Variants<SubtractExpanded> kSubtractExpanded;
extern constinit const Variants<AddExpanded> kAddExpanded;

}  // namespace biseam::ring
