#include "setup/exact_config.hpp"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "base/failure.hpp"
#include "camera/trigonometry.hpp"
#include "setup/blend_values.hpp"

namespace biseam::tool {
namespace {

[[noreturn, gnu::format(printf, 1, 2)]] void refuse(const char* what, ...) {
  char line[192];
  va_list values;
  va_start(values, what);
  std::vsnprintf(line, sizeof line, what, values);
  va_end(values);
  throw Failure(ExitCode::settings, "--engine exact: " + std::string(line));
}

void check_lens(const BiseamLens& lens, int index) {
  if (lens.mount != 0) refuse("the picture of lens %d is not upright (mount %d)", index, lens.mount);
  for (const double k : lens.k) {
    if (k != 0) refuse("lens %d is not equidistant (k is %g, %g, %g)", index, lens.k[0], lens.k[1], lens.k[2]);
  }
  const auto is_one = [](double gain) { return gain == 1; };
  if (lens.vignette[0] != 0 || lens.vignette[1] != 0 || !std::all_of(std::begin(lens.gain), std::end(lens.gain), is_one)) {
    refuse("the light of lens %d needs correction (vignette, gain)", index);
  }
  const BiseamTurn& turn = lens.turn;
  if (turn.yaw != 0 || turn.pitch != 0 || (index == 0 && turn.roll != 0)) {
    refuse("lens %d is turned by %g, %g, %g degrees; it knows a roll of lens 1 alone", index, turn.yaw, turn.pitch, turn.roll);
  }
}

void check_fit(const Setup& setup, BiseamFormat format) {
  const BiseamLens(&lenses)[2] = setup.camera.lens;
  if (format != BISEAM_NV12 && format != BISEAM_I420) refuse("the pictures are not of 8 bits with chroma of half the size");
  for (int k = 0; k < 2; ++k) check_lens(lenses[k], k);
  if (lenses[0].width != lenses[1].width || lenses[0].height != lenses[1].height) {
    refuse("the pictures differ in size, %dx%d and %dx%d", lenses[0].width, lenses[0].height, lenses[1].width,
           lenses[1].height);
  }
  if (lenses[0].height != setup.width / 2) {
    refuse("pictures are as high as the panorama: these are %d rows high, which makes --width %d", lenses[0].height,
           2 * lenses[0].height);
  }
}

LensReach reach_of(const BiseamLens& lens, int index) {
  const double side = std::min(lens.cx + 0.5, lens.width - 0.5 - lens.cx), edge = side / lens.p / kDegree;
  return {index, std::min(lens.fov / 2, edge), edge < lens.fov / 2, lens.p};
}

void set_pictures(const Setup& setup, StitchConfig& config) {
  const BiseamLens(&lenses)[2] = setup.camera.lens;
  config.in_w = config.in_luma_stride = config.in_chroma_stride = lenses[0].width;
  config.in_h = lenses[0].height;
  config.out_w[0] = config.out_luma_stride[0] = config.out_chroma_stride[0] = setup.width;
  config.out_h[0] = setup.width / 2;
  config.in_yuv_type = config.out_yuv_type = BISEAM_YUV420_SEMIPLANAR;
}

// In the picture of a lens rolled clockwise everything turns counter-clockwise.
void set_lenses(const BiseamLens (&lenses)[2], StitchConfig& config) {
  config.p0 = float(lenses[0].p);
  config.cx0 = float(lenses[0].cx);
  config.cy0 = float(lenses[0].cy);
  config.p1 = float(lenses[1].p);
  config.cx1 = float(lenses[1].cx);
  config.cy1 = float(lenses[1].cy);
  const double roll = lenses[1].turn.roll * kDegree;
  const float c = float(std::cos(roll)), s = float(std::sin(roll));
  const float matrix[9] = {c, s, 0, -s, c, 0, 0, 0, 1};
  std::copy(std::begin(matrix), std::end(matrix), config.lens_matrix);
  config.change_focus = 1;
}

void set_blend(const BlendValues& values, StitchConfig& config) {
  config.feather = values.feather;
  config.trans_width = values.trans_width;
  config.pyr_level = values.pyr_level;
  config.findpath_enable = values.search ? 1 : 0;
  config.findpath_width = values.findpath_width;
  config.inv_scale = float(values.inv_scale);
}

}  // namespace

StitchConfig exact_config(const Setup& setup, BiseamFormat format) {
  check_fit(setup, format);
  const BiseamLens(&lenses)[2] = setup.camera.lens;
  const LensReach reach0 = reach_of(lenses[0], 0), reach1 = reach_of(lenses[1], 1);
  StitchConfig config = {};
  set_pictures(setup, config);
  set_lenses(lenses, config);
  set_blend(settle_blend(setup.blend, setup.width, reach1.degrees < reach0.degrees ? reach1 : reach0), config);
  return config;
}

}  // namespace biseam::tool
