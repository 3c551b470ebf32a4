#pragma once

#include "base/memory_report.hpp"
#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// Fills kernel[0 .. taps) with equal taps that sum to about 1; nothing when taps <= 0.
void fill_flat_kernel(float sigma, float* kernel, int taps);

// dst = mean of src over taps x taps clipped to the image, same size; src and dst may be the same image.  An even count reaches
// one sample further to the left and the top.  no_memory: dst is left alone.
Status smooth(const BlendGray& src, BlendGray& dst, float sigma, int taps, MemoryReport report = nullptr);

}  // namespace biseam
