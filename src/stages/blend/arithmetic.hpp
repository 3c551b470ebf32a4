#pragma once

#include <cstdint>

#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

void fill(BlendImage& image, int32_t value);

// out = a - b, a + b, a * b, wrapping.  b and out are laid out like a, whatever they say, and may be a.  mismatch: a and b
// differ in size or one has not 1 or 3 channels; out untouched.
Status subtract(const BlendImage& a, const BlendImage& b, BlendImage& out);
Status add(const BlendImage& a, const BlendImage& b, BlendImage& out);
Status multiply(const BlendImage& a, const BlendImage& b, BlendImage& out);

// a *= mask, b *= 64 - mask, out = a + b, all four of a's layout.  mismatch: sizes differ; nothing is written.
Status mix(BlendImage& a, BlendImage& b, const BlendImage& mask, BlendImage& out);

// Copies dst.height * dst.stride samples, which src must hold, when the strides are equal, dst's stride equals src's height, or
// the types are equal; mismatch otherwise.
Status copy_samples(const BlendImage& src, BlendImage& dst);

// The same, ending with src's own height * stride samples: what a larger dst has beyond them stays.
Status copy_own_samples(const BlendImage& src, BlendImage& dst);

}  // namespace biseam
