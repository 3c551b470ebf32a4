// Two lenses back to back.  The world: z is the ideal axis of lens 1, which is the middle of a panorama; lens 0 looks the other
// way, its own x axis being the world's -x, its y axis the world's.
#pragma once

#include "camera/lens.hpp"

namespace biseam {

struct Camera {
  Lens lens[2];
  double baseline = 0;  // metres from lens 0 to lens 1, along z; without effect on things far away
};

// From the world to the upright frame of a lens: its ideal axis, then its turn.
Matrix3 lens_rotation(const Camera& camera, int index) noexcept;

// Radians by which both lenses see beyond the plane between them, all round it; negative where some directions are seen by
// neither.  What counts as seen is within fov / 2 of the lens's axis and in its picture.  At most pi / 4.
double overlap(const Camera& camera) noexcept;

}  // namespace biseam
