#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Bytes of an engine's working block and of one of its two blend blocks, at most 128 too many.  The engine counts in 32 bits;
// these are whole real numbers, so that no configuration overflows.
double working_bytes(const StitchConfig& config);
double blend_bytes(const StitchConfig& config);

constexpr double kMostBytes = INT32_MAX;

// Width of a blended band.
inline int64_t pair_width(const StitchConfig& config) { return 2 * (int64_t{config.trans_width} + config.feather); }

// A length of the seam search: divided as floats, truncated.  inv_scale is finite and 1 or more.
inline int64_t shrink(int64_t length, float inv_scale) { return static_cast<int64_t>(static_cast<float>(length) / inv_scale); }

}  // namespace biseam
