#include "camera/plan.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/angle.hpp"
#include "camera/blend_values.hpp"
#include "camera/extent.hpp"

namespace biseam::tool {
namespace {

// Left of the tables' reach and right of it, in pixels: chroma reads the next pair and the next row of pairs, a position
// beyond the last but two would leave the picture.
constexpr double kLowMargin = 0.25, kHighMargin = 2.25;

// In the picture of a lens rolled clockwise everything turns counter-clockwise.
std::array<float, 9> roll_matrix(double degrees) {
  const float c = float(std::cos(degrees * kDegree)), s = float(std::sin(degrees * kDegree));
  return {c, s, 0, -s, c, 0, 0, 0, 1};
}

bool fits(const Lens& lens, const Extent& extent, Size size) {
  const double low_x = lens.centre.x + lens.p * extent.left, high_x = lens.centre.x + lens.p * extent.right;
  const double low_y = lens.centre.y + lens.p * extent.top, high_y = lens.centre.y + lens.p * extent.bottom;
  return low_x >= kLowMargin && low_y >= kLowMargin && high_x <= size.width - kHighMargin &&
         high_y <= size.height - kHighMargin;
}

double missing_pixels(const Lens& lens, const Extent& extent, Size size) {
  const double left = -(lens.centre.x + lens.p * extent.left), right = lens.centre.x + lens.p * extent.right - (size.width - 1);
  const double top = -(lens.centre.y + lens.p * extent.top),
               bottom = lens.centre.y + lens.p * extent.bottom - (size.height - 1);
  return std::max({left, right, top, bottom, 0.0});
}

int width_for(double p, const Extent& extent) {
  return int(std::ceil((p * (extent.right - extent.left) + kLowMargin + kHighMargin) / 2)) * 2;
}

// The tables' reach fills the height.
WarpTarget filling_target(const Extent& extent, int height) {
  WarpTarget target;
  target.p = (height - kLowMargin - kHighMargin) / (extent.bottom - extent.top);
  target.centre = {kLowMargin - target.p * extent.left, kLowMargin - target.p * extent.top};
  target.size = {width_for(target.p, extent), height};
  return target;
}

void set_output(StitchConfig& config, int width) {
  config.out_w[0] = config.out_luma_stride[0] = config.out_chroma_stride[0] = width;
  config.out_h[0] = width / 2;
  config.in_yuv_type = config.out_yuv_type = BISEAM_YUV420_SEMIPLANAR;
}

void set_blend(StitchConfig& config, const BlendValues& values) {
  config.feather = values.feather;
  config.trans_width = values.trans_width;
  config.pyr_level = values.pyr_level;
  config.findpath_enable = values.search ? 1 : 0;
  config.findpath_width = values.findpath_width;
  config.inv_scale = float(values.inv_scale);
}

void set_lenses(StitchConfig& config, const LensPlan (&plan)[2], const std::array<float, 9>& matrix) {
  config.in_w = config.in_luma_stride = config.in_chroma_stride = plan[0].target.size.width;
  config.in_h = plan[0].target.size.height;
  config.p0 = float(plan[0].target.p);
  config.cx0 = float(plan[0].target.centre.x);
  config.cy0 = float(plan[0].target.centre.y);
  config.p1 = float(plan[1].target.p);
  config.cx1 = float(plan[1].target.centre.x);
  config.cy1 = float(plan[1].target.centre.y);
  std::copy(matrix.begin(), matrix.end(), config.lens_matrix);
  config.change_focus = 1;
}

}  // namespace

Plan make_plan(const Lens (&lenses)[2], const Size (&sizes)[2], const profile::BlendSettings& blend, int width) {
  Plan plan = {};
  set_output(plan.config, width);
  set_blend(plan.config, settle_blend(blend, width, lenses[1].reach < lenses[0].reach ? lenses[1] : lenses[0]));

  const std::array<float, 9> matrices[2] = {roll_matrix(0), roll_matrix(lenses[1].turn.roll)};
  Extent extents[2];
  bool right_size = sizes[0] == sizes[1] && sizes[0].height == width / 2;
  for (int k = 0; k < 2; ++k) {
    extents[k] = table_extent(width, std::clamp(plan.config.feather, 0, width / 4), matrices[k]);
    right_size = right_size && fits(lenses[k], extents[k], sizes[k]);
  }
  for (int k = 0; k < 2; ++k) {
    LensPlan& lens = plan.lens[k];
    lens.target = right_size ? WarpTarget{sizes[k], lenses[k].centre, lenses[k].p} : filling_target(extents[k], width / 2);
    lens.as_is = right_size && lenses[k].turn.yaw == 0 && lenses[k].turn.pitch == 0;
    lens.missing = missing_pixels(lenses[k], extents[k], sizes[k]);
  }
  const int common = std::max(plan.lens[0].target.size.width, plan.lens[1].target.size.width);
  for (LensPlan& lens : plan.lens) lens.target.size.width = common;
  set_lenses(plan.config, plan.lens, matrices[1]);
  return plan;
}

}  // namespace biseam::tool
