// From the disparities of frames to how far either lens's view is moved: smooth in time and round the ring.
#pragma once

#include <cstdint>

#include "ring/near/disparity.hpp"
#include "ring/near/near_shape.hpp"

namespace biseam::ring {

// Frames that count, the newest last at next - 1.  Their mean moves by no more than a span's share of the largest disparity
// from frame to frame, and what came before them has no effect.
struct NearMemory {
  static constexpr int kMostFrames = 8;
  int32_t span, filled, next;  // span: 1 .. kMostFrames
  int16_t frames[kMostFrames][kMostSearchLength];
};

// An eighth of a second; rate: frames a second.
int near_span(double rate) noexcept;

void forget(NearMemory& memory) noexcept;
void remember(const NearShape& shape, const int16_t* disparities, NearMemory& memory) noexcept;
// Whether a memory from outside can be gone on from.
bool is_valid(const NearMemory& memory, const NearShape& shape, int span) noexcept;

// By how many strip samples, Q16, lens 0's view of the ring is to be moved towards larger b and lens 1's towards smaller ones,
// at every t: length + 1 of them, the last is the first.  any: whether one of them isn't 0.
struct Displacement {
  int32_t values[kMaxStripLength + 1];
  bool any;
};

// Along the ring a displacement changes by no more than kSteepest samples from sample to sample; it is never less than half of
// the disparity but for what little smoothing takes, so that near things are moved as a whole.
inline constexpr double kSteepest = 0.5;
void displace(const NearShape& shape, const int16_t* disparities, Displacement& displacement) noexcept;
// By the mean of the frames that count.
void displace(const NearShape& shape, const NearMemory& memory, Displacement& displacement) noexcept;

}  // namespace biseam::ring
