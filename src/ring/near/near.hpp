// Near things, which the lenses see apart, brought together, frame by frame.
#pragma once

#include "ring/near/disparity.hpp"
#include "ring/near/displacement.hpp"
#include "ring/strip/strip_memory.hpp"

namespace biseam::ring {

struct NearMatch {
  NearShape shape;
  NearMemory memory;  // what goes on from frame to frame
  // Of the present frame.
  Displacement displacement;
  int16_t disparities[kMostSearchLength];
  DisparitySearch search;
};

// Disparities can be found in the strip.  rate: frames a second.
void start_near_match(StripShape strip, double rate, NearMatch& match) noexcept;

// The steps of a frame; parts of the first may run at the same time.
int near_parts(const NearMatch& match) noexcept;
void measure_near_part(NearMatch& match, const StripViews& views, int part) noexcept;
void settle_near(NearMatch& match) noexcept;
// In place of both: disparities that are known, whatever the memory says.
void follow_near(NearMatch& match, const int16_t* disparities) noexcept;
// Strips of samples [first_row, end_row) with near things together.
void match_near(const NearMatch& match, const StripPlan& plan, const StripViews& views, int first_row, int end_row) noexcept;

}  // namespace biseam::ring
