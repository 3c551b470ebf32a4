// From directions to a lens's recorded picture and back: the one projection of the system.
#pragma once

#include "camera/camera.hpp"
#include "camera/trigonometry.hpp"

namespace biseam {

// Beyond fov / 2 a lens has no picture.  Its radius goes on as the formula says for so many degrees, as interpolation near the
// limit needs positions beyond it, and stays as it is from there on.
inline constexpr double kBeyondFov = 28;

struct ImagePoint {
  double x, y;   // of the recorded picture
  double angle;  // radians from the lens's axis
};

class Projector {
 public:
  Projector(const Camera& camera, int index) noexcept;

  // Any direction but (0, 0, 0), of any length.  Directions beyond the limit give finite positions that mean nothing.
  ImagePoint project(const Vec3& direction) const noexcept { return image_of(to_picture_ * direction); }

  // The direction, of length 1, that falls on a position; from beyond fov / 2 the nearest one there.
  Vec3 unproject(double x, double y) const noexcept;

  // Whether a direction is within fov / 2 and between the outermost pixels' outer edges.
  bool sees(const Vec3& direction) const noexcept;

  // From the world to the frame whose x and y are those of the recorded picture.
  const Matrix3& to_picture() const noexcept { return to_picture_; }

  // ray: in that frame.
  ImagePoint image_of(const Vec3& ray) const noexcept {
    constexpr double kTiny = 1e-140;  // on the axis, and opposite to it, there is no azimuth
    const double across = std::sqrt(ray.x * ray.x + ray.y * ray.y), angle = arctangent(across, ray.z);
    const double a = angle < last_ ? angle : last_;
    const double scale = radius(lens_, a) / (across > kTiny ? across : 1);
    return {lens_.cx + scale * ray.x, lens_.cy + scale * ray.y, angle};
  }

 private:
  Lens lens_;
  Matrix3 to_picture_;
  double last_;  // radians
};

}  // namespace biseam
