#include "camera/blend_values.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/failure.hpp"

namespace biseam::tool {
namespace {

constexpr double kUsedOverlap = 0.8;  // the rim of a fisheye is dark and soft
constexpr int kLeastFeather = 4;

// Columns beyond a seam that both lenses see well; a wider overlap than 1/32 of the panorama helps no seam.
int open_feather(int width, double reach) {
  const double columns = (reach - 90) / 360 * width * kUsedOverlap;
  const int feather = std::min(int(std::floor(columns)), width / 32) / 4 * 4;
  if (feather >= kLeastFeather) return feather;
  char line[160];
  std::snprintf(line, sizeof line,
                "the lenses see %.1f degrees off axis: too little overlap, fov or p may be wrong, or give feather", reach);
  throw Failure(ExitCode::settings, line);
}

// Twice the feather lets the blend hide a difference in brightness without a step at the band's edges: the mean step there is
// below half a code value.  Both fit between the middles of the lenses.
int open_transition(int width, int feather) { return std::clamp(2 * feather, 0, std::max(0, width / 4 - feather)) / 2 * 2; }

// As often as a band stays 6 columns wide or more.
int open_levels(int pair_width) { return std::clamp(int(std::log2(std::max(pair_width, 12) / 6)), 1, 5); }

}  // namespace

BlendValues settle_blend(const profile::BlendSettings& settings, int width, double reach) {
  BlendValues values;
  values.feather = settings.feather ? *settings.feather : open_feather(width, reach);
  values.trans_width = settings.trans_width.value_or(open_transition(width, values.feather));
  values.pyr_level = settings.pyr_level.value_or(open_levels(2 * (values.feather + values.trans_width)));
  values.findpath_width = settings.findpath_width.value_or(2 * values.feather);
  values.inv_scale = settings.inv_scale.value_or(std::max(1.0, width / 960.0));
  values.search = settings.search.value_or(true);
  return values;
}

}  // namespace biseam::tool
