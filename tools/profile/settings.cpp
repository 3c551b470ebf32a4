#include "profile/settings.hpp"

#include <cmath>

namespace biseam::profile {
namespace {

template <class T>
void replace(std::optional<T>& base, const std::optional<T>& over) {
  if (over) base = over;
}

// Pixel centres are at integers, so the edges of a picture are at -0.5 and size - 0.5.
void scale_position(std::optional<double>& position, double scale) {
  if (position) position = (*position + 0.5) * scale - 0.5;
}

void scale_columns(std::optional<int>& columns, double scale) {
  if (columns) columns = int(std::lround(*columns * scale / 2)) * 2;
}

std::string text(Size size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

}  // namespace

void replace_settings(LensSettings& base, const LensSettings& over) {
  replace(base.cx, over.cx);
  replace(base.cy, over.cy);
  replace(base.p, over.p);
  replace(base.k, over.k);
  replace(base.fov, over.fov);
  replace(base.mount, over.mount);
  replace(base.yaw, over.yaw);
  replace(base.pitch, over.pitch);
  replace(base.roll, over.roll);
  replace(base.vignette, over.vignette);
  replace(base.gain, over.gain);
}

void replace_settings(BlendSettings& base, const BlendSettings& over) {
  replace(base.feather, over.feather);
  replace(base.trans_width, over.trans_width);
  replace(base.pyr_level, over.pyr_level);
  replace(base.search, over.search);
  replace(base.findpath_width, over.findpath_width);
  replace(base.inv_scale, over.inv_scale);
}

LensSettings scale_lens(const LensSettings& lens, Size from, Size to, const std::string& profile) {
  if (from == to) return lens;
  const double scale = double(to.width) / from.width, other = double(to.height) / from.height;
  if (std::abs(scale - other) > 0.01 * scale) {
    throw Error(profile + ": is for pictures of " + text(from) + ", this one is " + text(to));
  }
  LensSettings scaled = lens;
  scale_position(scaled.cx, scale);
  scale_position(scaled.cy, scale);
  if (scaled.p) *scaled.p *= scale;
  return scaled;
}

BlendSettings scale_blend(const BlendSettings& blend, int from_width, int to_width) {
  if (from_width == to_width) return blend;
  const double scale = double(to_width) / from_width;
  BlendSettings scaled = blend;
  scale_columns(scaled.feather, scale);
  scale_columns(scaled.trans_width, scale);
  scale_columns(scaled.findpath_width, scale);
  return scaled;
}

}  // namespace biseam::profile
