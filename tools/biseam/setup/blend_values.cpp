#include "setup/blend_values.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "base/failure.hpp"

namespace biseam::tool {
namespace {

constexpr double kUsedOverlap = 0.8;  // the rim of a fisheye is dark and soft
constexpr int kLeastFeather = 4;

// Columns of what both lenses see well beyond a seam.
double shared_columns(int width, double reach) { return (reach - 90) / 360 * width * kUsedOverlap; }

double least_reach(int width) { return 90 + kLeastFeather * 360 / (width * kUsedOverlap); }

// A panorama this wide has columns enough for any overlap that deserves the name.
constexpr int kAmpleWidth = 960;

std::string overlap_trouble(int width, const LensReach& lens) {
  char line[320];
  const double needed = least_reach(width);
  if (lens.degrees >= least_reach(kAmpleWidth)) {
    const int least_width = int(std::ceil(kLeastFeather / shared_columns(1, lens.degrees) / 8)) * 8;
    std::snprintf(
        line, sizeof line,
        "a panorama of %d columns is too small: the lenses share %.1f of them beyond each seam, and a blend needs %d; "
        "give --width %d or more, or larger pictures",
        width, shared_columns(width, lens.degrees), kLeastFeather, least_width);
  } else if (lens.is_cut) {
    std::snprintf(line, sizeof line,
                  "lens %d: its picture ends %.1f degrees off the axis, and a blend needs %.1f: the circle is cut by the "
                  "picture's edge, or p (%g) is too large; below %.1f it would do",
                  lens.index, lens.degrees, needed, lens.p, lens.p * lens.degrees / needed);
  } else {
    std::snprintf(line, sizeof line,
                  "lens %d: its circle ends %.1f degrees off the axis, and a blend needs %.1f: fov is too small", lens.index,
                  lens.degrees, needed);
  }
  return line;
}

// A wider overlap than 1/32 of the panorama helps no seam.
int open_feather(int width, const LensReach& worse) {
  const int feather = std::min(int(std::floor(shared_columns(width, worse.degrees))), width / 32) / 4 * 4;
  if (feather < kLeastFeather) throw Failure(ExitCode::settings, overlap_trouble(width, worse));
  return feather;
}

// Twice the feather lets the blend hide a difference in brightness without a step at the band's edges: the mean step there is
// below half a code value.  Both fit between the middles of the lenses.
int open_transition(int width, int feather) { return std::clamp(2 * feather, 0, std::max(0, width / 4 - feather)) / 2 * 2; }

// As often as a band stays 6 columns wide or more.
int open_levels(int pair_width) { return std::clamp(int(std::log2(std::max(pair_width, 12) / 6)), 1, 5); }

// The engine searches strips of 5 columns or more after they were shrunk; half a column more keeps clear of rounding.
constexpr int kLeastStrip = 5;
constexpr double kSafeStrip = kLeastStrip + 0.5;

// The search gains little from more than 960 columns.
double open_shrinking(int width, int findpath_width) {
  return std::max(1.0, std::min(width / 960.0, findpath_width / kSafeStrip));
}

bool open_search(int findpath_width) {
  if (findpath_width >= kLeastStrip) return true;
  notice("a strip of " + std::to_string(findpath_width) + " columns is too narrow to search a seam in; the cut is straight");
  return false;
}

}  // namespace

BlendValues settle_blend(const profile::BlendSettings& settings, int width, const LensReach& worse) {
  BlendValues values;
  values.feather = settings.feather ? *settings.feather : open_feather(width, worse);
  values.trans_width = settings.trans_width.value_or(open_transition(width, values.feather));
  values.pyr_level = settings.pyr_level.value_or(open_levels(2 * (values.feather + values.trans_width)));
  values.findpath_width = settings.findpath_width.value_or(2 * values.feather);
  values.inv_scale = settings.inv_scale.value_or(open_shrinking(width, values.findpath_width));
  values.search = settings.search ? *settings.search : open_search(values.findpath_width);
  return values;
}

}  // namespace biseam::tool
