#include "ring/light/match.hpp"

#include <algorithm>

#include "ring/light/match_chroma_rows.hpp"

namespace biseam::ring {

namespace {

void hold(int16_t* samples, int count) noexcept {
  for (int i = 0; i < count; ++i) samples[i] = std::clamp(samples[i], int16_t{0}, static_cast<int16_t>(kMaxFine));
}

}  // namespace

void start_light_match(const Tone& tone, StripShape strip, double rate, LightMatch& match) noexcept {
  match.tone = tone;
  fill_logs(tone, match.logs);
  match.memory = {};
  match.memory.span = light_span(rate);
  plan_match_field(strip, match.field);
}

void measure_light_part(LightMatch& match, const StripPlan& plan, const StripViews& views, int sector) noexcept {
  StripPair strips{plan.config.shape, {}};
  for (int lens = 0; lens < 2; ++lens) {
    for (int plane = 0; plane < plan.config.planes; ++plane) strips.planes[lens][plane] = views.strips[lens][plane];
  }
  match.frame.sectors[sector] = measure_sector(strips, match.tone, match.logs, sector);
}

void settle_light(LightMatch& match, StripShape strip) noexcept {
  remember(match.memory, match.frame);
  fill_match_field(model_of(match.memory), match.tone, strip, match.field);
}

void follow_light(LightMatch& match, StripShape strip, const LightFrame& light) noexcept {
  fill_match_field(model_of(&light, 1), match.tone, strip, match.field);
}

namespace {

struct StripValues {
  int16_t gains[kMaxStripWidth], shares[kMaxStripWidth];
};

// Of one lens and plane, in rows that share their values.
void match_strip_rows(const LightMatch& match, StripShape shape, int16_t* const* planes, int plane, ptrdiff_t at, FineRows rows,
                      const StripValues& values) noexcept {
  const ValueRows gains{values.gains, values.gains, 0, 0}, shares{values.shares, values.shares, 0, 0};
  if (plane == 0 || match.tone.rgb) {
    kMatchRows.best()(planes[plane] + at, rows, {gains, true, true}, match.tone, shape.width);
  } else {
    const MatchChroma chroma{{gains, true, true}, shares, planes[0] + at, shape.width, {plane, plane}};
    kMatchChromaRows.best()(planes[plane] + at, rows, chroma, match.tone, shape.width);
  }
  hold(planes[plane] + at, rows.count * shape.width);
}

}  // namespace

void match_strips(const LightMatch& match, const StripPlan& plan, const StripViews& views, int first_row,
                  int end_row) noexcept {
  const StripShape shape = plan.config.shape;
  MatchStripRow row;
  StripValues values;
  for (int lens = 0; lens < 2; ++lens) {
    for (int t = first_row; t < end_row; t += kSharedRows) {
      match_strip_row(match.field, shape, lens, t + kSharedRows / 2, row);
      const FineRows shared{std::min(kSharedRows, end_row - t), shape.width};
      for (int plane = 0; plane < plan.config.planes; ++plane) {
        match_strip_values(match.field, shape, row, first_gain + plane, values.gains);
        if (plane > 0 && !match.tone.rgb) {
          match_strip_values(match.field, shape, row, first_tint + plane - 1, values.shares);
        }
        match_strip_rows(match, shape, views.strips[lens], plane, ptrdiff_t{t} * shape.width, shared, values);
      }
    }
  }
}

}  // namespace biseam::ring
