#include "camera/camera.hpp"

#include "camera/projector.hpp"
#include "camera/trigonometry.hpp"

namespace biseam {

Matrix3 lens_rotation(const Camera& camera, int index) noexcept {
  const double side = index == 0 ? -1 : 1;
  const Matrix3 ideal = {{{side, 0, 0}, {0, 1, 0}, {0, 0, side}}};
  return transposed(rotation(camera.lens[index].turn)) * ideal;
}

namespace {

constexpr int kDirections = 256;  // round the axis
constexpr int kHalvings = 16;     // of pi / 2: below 0.001 degrees

// How far beyond the plane a lens sees in the direction of (x, y).
double reach(const Projector& lens, double side, double x, double y) noexcept {
  double seen = -kPi / 4, unseen = kPi / 4;
  for (int i = 0; i < kHalvings; ++i) {
    const double beyond = 0.5 * (seen + unseen);
    const SineCosine a = sine_cosine(beyond);
    (lens.sees({a.cosine * x, a.cosine * y, -side * a.sine}) ? seen : unseen) = beyond;
  }
  return seen;
}

}  // namespace

double overlap(const Camera& camera) noexcept {
  double least = kPi / 4;
  for (int k = 0; k < 2; ++k) {
    const Projector lens(camera, k);
    for (int i = 0; i < kDirections; ++i) {
      const SineCosine t = sine_cosine(i * (2 * kPi / kDirections));
      const double b = reach(lens, k == 0 ? -1 : 1, t.cosine, t.sine);
      if (b < least) least = b;
    }
  }
  return least;
}

}  // namespace biseam
