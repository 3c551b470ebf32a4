// What a camera must be like to be stitched.
#pragma once

#include "camera/camera.hpp"

namespace biseam {

// One line that names field, value and rule; empty when there is nothing to say.
struct CameraError {
  char text[160] = "";
  explicit operator bool() const noexcept { return text[0] != '\0'; }
};

inline constexpr double kLeastOverlap = 1;  // degrees beyond the plane between the lenses, for each of them

// The first rule that is broken, in the order of the fields: finite values within their limits, a radius that increases up to
// fov / 2, an overlap all round.
CameraError check_camera(const Camera& camera) noexcept;

}  // namespace biseam
