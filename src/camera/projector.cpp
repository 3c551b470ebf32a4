#include "camera/projector.hpp"

namespace biseam {

Projector::Projector(const Camera& camera, int index) noexcept
    : lens_(camera.lens[index]),
      to_picture_(rotation_about_z(lens_.mount) * lens_rotation(camera, index)),
      last_((lens_.fov / 2 + kBeyondFov) * kDegree) {
  if (last_ > kPi) last_ = kPi;
}

Vec3 Projector::unproject(double x, double y) const noexcept {
  const double dx = x - lens_.cx, dy = y - lens_.cy, across = std::sqrt(dx * dx + dy * dy);
  const SineCosine a = sine_cosine(angle_of_radius(lens_, across, lens_.fov / 2 * kDegree));
  const double scale = a.sine / (across > 0 ? across : 1);
  return transposed(to_picture_) * Vec3{scale * dx, scale * dy, a.cosine};
}

bool Projector::sees(const Vec3& direction) const noexcept {
  const ImagePoint at = project(direction);
  return at.angle <= lens_.fov / 2 * kDegree && at.x >= -0.5 && at.x <= lens_.width - 0.5 && at.y >= -0.5 &&
         at.y <= lens_.height - 0.5;
}

}  // namespace biseam
