// The light of both lenses matched, frame by frame.
#pragma once

#include "ring/light/match_field.hpp"
#include "ring/light/measure.hpp"
#include "ring/strip/strip_memory.hpp"

namespace biseam::ring {

struct LightMatch {
  Tone tone;
  LogTable logs;
  LightFrame frame;    // of the present one
  LightMemory memory;  // what goes on from frame to frame
  MatchField field;
};

// rate: frames a second.
void start_light_match(const Tone& tone, StripShape strip, double rate, LightMatch& match) noexcept;

// The steps of a frame; parts of the first and the last may run at the same time.
void measure_light_part(LightMatch& match, const StripPlan& plan, const StripViews& views, int sector) noexcept;
void settle_light(LightMatch& match, StripShape strip) noexcept;
// In place of both: light that is known, whatever the memory says.
void follow_light(LightMatch& match, StripShape strip, const LightFrame& light) noexcept;
// Strips of samples [first_row, end_row) in matched light.
void match_strips(const LightMatch& match, const StripPlan& plan, const StripViews& views, int first_row, int end_row) noexcept;

}  // namespace biseam::ring
