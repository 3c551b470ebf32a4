#include "camera/rules.hpp"

#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "camera/trigonometry.hpp"

namespace biseam {

namespace {

constexpr int kLargestSide = 16384;
constexpr double kFarthestCentre = 100000, kLeastScale = 1, kLargestScale = 16384;
constexpr double kLargestCoefficient = 10, kLeastFov = 120, kLargestFov = 300, kLargestTurn = 45, kLargestBaseline = 10;
constexpr double kLeastLight = 0.25, kLargestLight = 4;
constexpr double kLargestRadius = 16384;  // pixels
constexpr int kAngleSteps = 512;          // at which the radius and the light are tried

__attribute__((format(printf, 1, 2))) CameraError error(const char* format, ...) noexcept {
  CameraError error;
  va_list values;
  va_start(values, format);
  std::vsnprintf(error.text, sizeof error.text, format, values);
  va_end(values);
  return error;
}

struct Field {
  const char* name;
  double value, least, most;  // values that are no numbers lie outside all limits
};

CameraError check_fields(int index, const Field* fields, int count) noexcept {
  for (int i = 0; i < count; ++i) {
    const Field& f = fields[i];
    if (f.value >= f.least && f.value <= f.most) continue;
    return error("lens[%d].%s is %g: must be between %g and %g", index, f.name, f.value, f.least, f.most);
  }
  return {};
}

CameraError check_values(const Lens& lens, int index) noexcept {
  const Field fields[] = {
      {"width", double(lens.width), 2, kLargestSide},
      {"height", double(lens.height), 2, kLargestSide},
      {"cx", lens.cx, -kFarthestCentre, kFarthestCentre},
      {"cy", lens.cy, -kFarthestCentre, kFarthestCentre},
      {"p", lens.p, kLeastScale, kLargestScale},
      {"k[0]", lens.k[0], -kLargestCoefficient, kLargestCoefficient},
      {"k[1]", lens.k[1], -kLargestCoefficient, kLargestCoefficient},
      {"k[2]", lens.k[2], -kLargestCoefficient, kLargestCoefficient},
      {"fov", lens.fov, kLeastFov, kLargestFov},
      {"turn.yaw", lens.turn.yaw, -kLargestTurn, kLargestTurn},
      {"turn.pitch", lens.turn.pitch, -kLargestTurn, kLargestTurn},
      {"turn.roll", lens.turn.roll, -kLargestTurn, kLargestTurn},
      {"vignette[0]", lens.vignette[0], -kLargestCoefficient, kLargestCoefficient},
      {"vignette[1]", lens.vignette[1], -kLargestCoefficient, kLargestCoefficient},
      {"gain[0]", lens.gain[0], kLeastLight, kLargestLight},
      {"gain[1]", lens.gain[1], kLeastLight, kLargestLight},
      {"gain[2]", lens.gain[2], kLeastLight, kLargestLight},
  };
  if (const CameraError found = check_fields(index, fields, int(sizeof fields / sizeof *fields))) return found;
  if (lens.mount == 0 || lens.mount == 90 || lens.mount == 180 || lens.mount == 270) return {};
  return error("lens[%d].mount is %d: must be 0, 90, 180 or 270", index, lens.mount);
}

CameraError check_curves(const Lens& lens, int index) noexcept {
  const double last = lens.fov / 2 * kDegree;
  for (int i = 1; i <= kAngleSteps; ++i) {
    const double before = last * (i - 1) / kAngleSteps, angle = last * i / kAngleSteps;
    if (!(radius(lens, angle) > radius(lens, before) && radius_slope(lens, angle) > 0)) {
      return error("lens[%d].k is (%g, %g, %g): the radius must increase up to fov / 2 = %g degrees, it does not at %.1f",
                   index, lens.k[0], lens.k[1], lens.k[2], lens.fov / 2, angle / kDegree);
    }
    for (int channel = 0; channel < 3; ++channel) {
      const double light = recorded_light(lens, channel, angle);
      if (light >= kLeastLight && light <= kLargestLight) continue;
      return error(
          "lens[%d].vignette is (%g, %g): the light must stay between %g and %g up to fov / 2, "
          "with gain[%d] it is %.3g at %.1f degrees",
          index, lens.vignette[0], lens.vignette[1], kLeastLight, kLargestLight, channel, light, angle / kDegree);
    }
  }
  if (radius(lens, last) <= kLargestRadius) return {};
  return error("lens[%d].p is %g: the radius at fov / 2 must be %g or less, it is %g", index, lens.p, kLargestRadius,
               radius(lens, last));
}

}  // namespace

CameraError check_camera(const Camera& camera) noexcept {
  for (int k = 0; k < 2; ++k) {
    if (const CameraError found = check_values(camera.lens[k], k)) return found;
    if (const CameraError found = check_curves(camera.lens[k], k)) return found;
  }
  if (!(camera.baseline >= 0 && camera.baseline <= kLargestBaseline)) {
    return error("baseline is %g: must be between 0 and %g", camera.baseline, kLargestBaseline);
  }
  const double seen = overlap(camera) / kDegree;
  if (seen >= kLeastOverlap) return {};
  // Rounded down: what is too little doesn't read as if it were enough.
  return error(
      "overlap is %.2f degrees: each lens must see %g or more beyond the plane between them, all round; "
      "p is too large, fov too small, or the circle cut off",
      std::floor(seen * 100) / 100, kLeastOverlap);
}

}  // namespace biseam
