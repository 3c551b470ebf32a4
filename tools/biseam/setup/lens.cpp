#include "setup/lens.hpp"

#include <algorithm>
#include <cstdio>

#include "base/failure.hpp"
#include "camera/lens.hpp"
#include "camera/trigonometry.hpp"

namespace biseam::tool {
namespace {

// From the centre to the nearest edge.
double fitting_radius(const BiseamLens& lens) {
  return std::min(std::min(lens.cx + 0.5, lens.width - 0.5 - lens.cx), std::min(lens.cy + 0.5, lens.height - 0.5 - lens.cy));
}

void tell_assumption(const BiseamLens& lens, double radius, int index) {
  char line[160];
  std::snprintf(line, sizeof line,
                "lens %d: its scale is not given, taking the circle of radius %.1f around (%.1f, %.1f) as %g degrees", index,
                radius, lens.cx, lens.cy, lens.fov);
  notice(line);
}

// The scale at which the circle of the lens's angle of view has the radius.
double scale_of(const BiseamLens& lens, double pixels) {
  Lens unit;
  unit.p = 1;
  std::copy(std::begin(lens.k), std::end(lens.k), unit.k);
  return pixels / radius(unit, lens.fov / 2 * kDegree);
}

}  // namespace

BiseamLens settle_lens(const profile::LensSettings& settings, Size recorded, int index) {
  BiseamLens lens = biseam_camera_of(recorded.width, recorded.height, settings.fov.value_or(kUsualFov)).lens[index];
  lens.mount = settings.mount.value_or(lens.mount);
  lens.cx = settings.cx.value_or(lens.cx);
  lens.cy = settings.cy.value_or(lens.cy);
  if (settings.k) std::copy(settings.k->begin(), settings.k->end(), lens.k);
  if (settings.vignette) std::copy(settings.vignette->begin(), settings.vignette->end(), lens.vignette);
  if (settings.gain) std::copy(settings.gain->begin(), settings.gain->end(), lens.gain);
  lens.turn = {settings.yaw.value_or(0), settings.pitch.value_or(0), settings.roll.value_or(0)};
  if (settings.p) {
    lens.p = *settings.p;
    return lens;
  }
  const double pixels = fitting_radius(lens);
  if (pixels < 1) throw Failure(ExitCode::settings, "lens " + std::to_string(index) + ": its centre is outside the picture");
  lens.p = scale_of(lens, pixels);
  tell_assumption(lens, pixels, index);
  return lens;
}

}  // namespace biseam::tool
