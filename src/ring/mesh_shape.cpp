#include "ring/mesh_shape.hpp"

#include "camera/trigonometry.hpp"

namespace biseam::ring {

namespace {

// Half pixels past a panorama for which there are nodes too: coarse grids go on past its last block.
constexpr int kPastTheEnd = 16;

constexpr double kLargestStep = 200;  // pixels of a lens between two nodes; the integer cubics hold 256
// Cubics through nodes h radians apart err by error_factor(a) * r(a) / sin(a)^4 * h^4 pixels beyond 90 degrees from the axis,
// as positions turn ever faster round the point opposite to it, and by less within.  The factor is measured, in equidistant
// lenses with angles of view up to 300 degrees.
constexpr double kErrorFactor = 0.025, kFactorsGrowth = 0.035, kGrowsFrom = 120 * kDegree;
constexpr double kLargestError = 0.004;
constexpr int kAngleSteps = 64;

double larger(double a, double b) noexcept { return a < b ? b : a; }

double error_factor(double angle) noexcept { return kErrorFactor + kFactorsGrowth * larger(0, angle - kGrowsFrom); }

struct Strain {
  double step;   // pixels a radian, along the radius or around the axis
  double error;  // pixels at h = 1
};

Strain strain_of(const Lens& lens) noexcept {
  const double tilt = (larger(lens.turn.yaw, -lens.turn.yaw) + larger(lens.turn.pitch, -lens.turn.pitch)) * kDegree;
  const double limit = lens.fov / 2 * kDegree, used = (90 + kLargestHalfWidth) * kDegree + tilt,
               last = limit < used ? limit : used;
  Strain most = {lens.p, 0};
  for (int i = 1; i <= kAngleSteps; ++i) {
    const double angle = last * i / kAngleSteps, slope = radius_slope(lens, angle), sine = sine_cosine(angle).sine;
    const double around = radius(lens, angle) / sine;
    most.step = larger(most.step, larger(slope, around));
    if (2 * angle > kPi) most.error = larger(most.error, error_factor(angle) * around / (sine * sine * sine));
  }
  return most;
}

bool is_fine(double h, const Strain& strain) noexcept {
  return h * strain.step <= kLargestStep && strain.error * (h * h) * (h * h) <= kLargestError;
}

}  // namespace

MeshShape mesh_shape(const Camera& camera, int width, int height, double widest) noexcept {
  const Strain strains[2] = {strain_of(camera.lens[0]), strain_of(camera.lens[1])};
  const double across = 2 * kPi / width, down = kPi / height, pixel = across < down ? down : across;
  const auto is_fine_enough = [&](int bits) {
    const double h = pixel * (1 << bits) / 2;
    return h <= widest * kDegree && is_fine(h, strains[0]) && is_fine(h, strains[1]);
  };
  int bits = kLargestSpacingBits;
  while (bits > 0 && !is_fine_enough(bits)) --bits;
  MeshShape shape;
  shape.width = width;
  shape.height = height;
  shape.spacing_bits = bits;
  shape.columns = ((2 * width + kPastTheEnd) >> bits) + 1 + kNodesAround;
  shape.rows = ((2 * height + kPastTheEnd) >> bits) + 1 + kNodesAround;
  return shape;
}

}  // namespace biseam::ring
