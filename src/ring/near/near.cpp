#include "ring/near/near.hpp"

#include <cstring>

#include "ring/near/shift_rows.hpp"

namespace biseam::ring {

void start_near_match(StripShape strip, double rate, NearMatch& match) noexcept {
  std::memset(&match, 0, sizeof match);
  match.shape = near_shape(strip);
  match.memory.span = near_span(rate);
}

int near_parts(const NearMatch& match) noexcept { return search_parts(match.shape); }

void measure_near_part(NearMatch& match, const StripViews& views, int part) noexcept {
  measure_disparities(match.shape, {views.strips[0][0], views.strips[1][0]}, part, match.search);
}

void settle_near(NearMatch& match) noexcept {
  find_disparities(match.shape, match.search, match.disparities);
  remember(match.shape, match.disparities, match.memory);
  displace(match.shape, match.memory, match.displacement);
}

void follow_near(NearMatch& match, const int16_t* disparities) noexcept {
  displace(match.shape, disparities, match.displacement);
}

void match_near(const NearMatch& match, const StripPlan& plan, const StripViews& views, int first_row, int end_row) noexcept {
  if (!match.displacement.any) return;
  const int width = plan.config.shape.width;
  for (int lens = 0; lens < 2; ++lens) {
    for (int plane = 0; plane < plan.config.planes; ++plane) {
      for (int t = first_row; t < end_row; ++t) {
        shift_row(lens, match.displacement.values[t], views.strips[lens][plane] + ptrdiff_t{t} * width, width);
      }
    }
  }
}

}  // namespace biseam::ring
