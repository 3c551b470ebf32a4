#pragma once

#include <cstddef>
#include <cstdint>

namespace biseam::ring {

inline constexpr int kMaxPlanes = 3;

// What of a lens's plane stays from frame to frame.
struct PlaneGeometry {
  int width, height;           // samples
  int spacing_x, spacing_y;    // luma pixels from sample to sample: 1 or 2
  int32_t origin_x, origin_y;  // where sample (0, 0) lies, Q16 luma pixels: 0 for luma, 0 or 1/2 for chroma
};

// How samples are stored: bytes, or 16-bit words of depth bits above shift bits that don't count.
struct SampleFormat {
  int depth;  // 8, 10 or 12; 8 goes with bytes
  int shift;  // 0 for low bits, 16 - depth for high ones
};

// A plane of one frame.  Not owned.
struct PlaneSamples {
  const void* first;  // sample (0, 0)
  ptrdiff_t stride;   // bytes from row to row; may be negative
  int step;           // samples from sample to sample: 1, or 2 in interleaved pairs
};

// Where strip samples lie in a lens's picture: luma pixels, Q16, row after row of the strip.  Within +-16384 pixels.
struct StripPositions {
  const int32_t *x, *y;
};

}  // namespace biseam::ring
