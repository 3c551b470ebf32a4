#pragma once

#include <cstdint>

#include "ring/light.hpp"
#include "ring/light/match.hpp"
#include "ring/near/near.hpp"
#include "ring/strip/picture.hpp"
#include "ring/strip/seam_memory.hpp"
#include "ring/strip/strip_memory.hpp"

namespace biseam::ring {

enum class SeamMode {
  search,
  middle,
  given,  // by what is in the views' path already
};

struct SeamSettings {
  SeamMode mode;
  SeamMemory* memory;  // of the frames before, which a search adds to; null: every frame is searched alone
};

// A frame's strips: what they are made from and where they go.  Nothing is owned.
struct StripFrame {
  const StripPlan* plan;
  const StripViews* views;
  StripPositions positions[2];
  PlaneSamples pictures[2][kMaxPlanes];
  SampleFormat format;
  const Light* lights;      // of either lens; null: there is none to undo
  const LightMatch* match;  // settled before strips are compared; null: light isn't matched
  const NearMatch* near;    // likewise; null: near things stay apart
  SeamSettings seam;
};

// The steps of a frame, in order; every part of one ends before the next begins.  Parts of a step may run at the same time and
// in any order: the result is the same.
enum class StripStep : int {
  reduce,   // rims of the pictures, to about the strips' pitch
  unroll,   // strips
  compare,  // strips in matched light, with near things together, and their differences
  seam,     // part 0: path and weights; the others: pyramids of the differences
  blend,    // corrections
};
inline constexpr StripStep kStripSteps[] = {StripStep::reduce, StripStep::unroll, StripStep::compare, StripStep::seam,
                                            StripStep::blend};

int strip_parts(const StripPlan& plan, StripStep step) noexcept;
void run_strip_part(const StripFrame& frame, StripStep step, int part) noexcept;

// All of it on the calling thread.
void run_strips(const StripFrame& frame) noexcept;

}  // namespace biseam::ring
