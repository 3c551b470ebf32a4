#include "ring/light/match.hpp"

#include <algorithm>

#include "ring/light/match_rows.hpp"

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

void match_strips(const LightMatch& match, const StripPlan& plan, const StripViews& views, int first_row,
                  int end_row) noexcept {
  const StripShape shape = plan.config.shape;
  MatchRows rows;
  for (int lens = 0; lens < 2; ++lens) {
    int16_t* const* const planes = views.strips[lens];
    for (int t = first_row; t < end_row; t += kSharedRows) {
      const ptrdiff_t at = ptrdiff_t{t} * shape.width;
      const SharedRows shared{std::min(kSharedRows, end_row - t), shape.width};
      match_strip_row(match.field, shape, lens, t + kSharedRows / 2, rows);
      for (int plane = 0; plane < plan.config.planes; ++plane) {
        int16_t* const samples = planes[plane] + at;
        if (plane == 0 || match.tone.rgb) {
          kMatchRows.best()(samples, shared, rows.values[plane], match.tone, shape.width);
        } else {
          const MatchChroma chroma{{rows.values[plane], nullptr},
                                   {rows.values[first_tint + plane - 1], nullptr},
                                   planes[0] + at,
                                   shape.width,
                                   match.tone.black,
                                   match.tone.white};
          kMatchChromaRows.best()(samples, shared, chroma, 1, shape.width);
        }
        hold(samples, shared.count * shape.width);
      }
    }
  }
}

}  // namespace biseam::ring
