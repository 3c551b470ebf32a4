#include "camera/lens.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/angle.hpp"
#include "base/failure.hpp"

namespace biseam::tool {
namespace {

// From the centre to the nearest edge.
double fitting_radius(Point centre, Size size) {
  return std::min(std::min(centre.x + 0.5, size.width - 0.5 - centre.x),
                  std::min(centre.y + 0.5, size.height - 0.5 - centre.y));
}

void tell_assumption(int index, Point centre, double radius, double fov) {
  char line[160];
  std::snprintf(line, sizeof line,
                "lens %d: its scale is not given, taking the circle of radius %.1f around (%.1f, %.1f) as %g degrees", index,
                radius, centre.x, centre.y, fov);
  notice(line);
}

}  // namespace

Lens settle_lens(const profile::LensSettings& settings, Size recorded, int index) {
  const int mount = settings.mount.value_or(0);
  const double fov = settings.fov.value_or(kUsualFov);
  const Point centre{settings.cx.value_or((recorded.width - 1) / 2.0), settings.cy.value_or((recorded.height - 1) / 2.0)};
  Lens lens;
  if (settings.p) {
    lens.p = *settings.p;
  } else {
    const double radius = fitting_radius(centre, recorded);
    if (radius < 1) throw Failure(ExitCode::settings, "lens " + std::to_string(index) + ": its centre is outside the picture");
    tell_assumption(index, centre, radius, fov);
    lens.p = radius / (fov / 2 * kDegree);
  }
  lens.centre = undo_quarter_turn(centre, recorded, mount);
  lens.turn = {settings.yaw.value_or(0), settings.pitch.value_or(0), settings.roll.value_or(0)};
  const int width = mount % 180 == 0 ? recorded.width : recorded.height;
  const double side = std::min(lens.centre.x + 0.5, width - 0.5 - lens.centre.x);
  const double edge = side / lens.p / kDegree;
  lens.reach = std::min(fov / 2, edge) - std::abs(lens.turn.yaw);
  lens.index = index;
  lens.is_cut = edge < fov / 2;
  return lens;
}

}  // namespace biseam::tool
