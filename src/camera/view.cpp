#include "camera/view.hpp"

#include "camera/trigonometry.hpp"

namespace biseam {

double longitude_of(const View& view, double x) noexcept { return 2 * kPi * (x + 0.5) / view.width - kPi; }

double latitude_of(const View& view, double y) noexcept { return kPi * (y + 0.5) / view.height - kPi / 2; }

Vec3 direction_at(const View& view, double x, double y) noexcept {
  const SineCosine longitude = sine_cosine(longitude_of(view, x)), latitude = sine_cosine(latitude_of(view, y));
  return rotation(view.turn) * Vec3{latitude.cosine * longitude.sine, latitude.sine, latitude.cosine * longitude.cosine};
}

ViewPoint shown_at(const View& view, const Vec3& direction) noexcept {
  const Vec3 d = transposed(rotation(view.turn)) * direction;
  const double longitude = arctangent(d.x, d.z), latitude = arctangent(d.y, std::sqrt(d.x * d.x + d.z * d.z));
  return {(longitude + kPi) * view.width / (2 * kPi) - 0.5, (latitude + kPi / 2) * view.height / kPi - 0.5};
}

}  // namespace biseam
