#include "camera/blend_values.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "failure.hpp"

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

// As often as a band stays 8 columns wide or more.
int open_levels(int pair_width) { return std::clamp(int(std::log2(std::max(pair_width, 16) / 8)), 1, 5); }

}  // namespace

BlendValues settle_blend(const BlendSettings& settings, int width, double reach) {
  BlendValues values;
  values.feather = settings.feather ? *settings.feather : open_feather(width, reach);
  values.trans_width = settings.trans_width.value_or(values.feather / 2 * 2);
  values.pyr_level = settings.pyr_level.value_or(open_levels(2 * (values.feather + values.trans_width)));
  values.findpath_width = settings.findpath_width.value_or(2 * values.feather);
  values.inv_scale = settings.inv_scale.value_or(std::max(1.0, width / 960.0));
  values.search = settings.search.value_or(true);
  return values;
}

}  // namespace biseam::tool
