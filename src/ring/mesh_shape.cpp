#include "ring/mesh_shape.hpp"

#include "camera/trigonometry.hpp"

namespace biseam::ring {

namespace {

// A lens is used a little beyond the plane between both, which may be farther from its axis when it is turned.
constexpr double kUsedAngle = 105 * kDegree;
constexpr double kWidestSpacing = 6 * kDegree;  // three of them stay below kBeyondFov
// The error of the cubics is kErrorFactor * m * h^4 pixels for nodes h radians apart and a lens that draws at most m pixels a
// radian; the factor is measured, with room to spare.
constexpr double kErrorFactor = 0.12, kLargestError = 0.003;
constexpr double kLargestStep = 200;  // pixels of a lens between two nodes; the integer cubics hold 256
constexpr int kAngleSteps = 64;

double most_pixels_a_radian(const Lens& lens) noexcept {
  const double last = lens.fov / 2 * kDegree < kUsedAngle ? lens.fov / 2 * kDegree : kUsedAngle;
  double most = lens.p;
  for (int i = 1; i <= kAngleSteps; ++i) {
    const double angle = last * i / kAngleSteps, slope = radius_slope(lens, angle);
    const double around = radius(lens, angle) / sine_cosine(angle).sine;
    most = slope > most ? slope : most;
    most = around > most ? around : most;
  }
  return most;
}

bool is_fine(double h, double most) noexcept {
  return h <= kWidestSpacing && h * most <= kLargestStep && kErrorFactor * most * (h * h) * (h * h) <= kLargestError;
}

}  // namespace

MeshShape mesh_shape(const Camera& camera, int width, int height) noexcept {
  const double most0 = most_pixels_a_radian(camera.lens[0]), most1 = most_pixels_a_radian(camera.lens[1]);
  const double most = most0 < most1 ? most1 : most0;
  const double across = 2 * kPi / width, down = kPi / height, pixel = across < down ? down : across;
  int bits = kLargestSpacingBits;
  while (bits > 0 && !is_fine(pixel * (1 << bits) / 2, most)) --bits;
  MeshShape shape;
  shape.width = width;
  shape.height = height;
  shape.spacing_bits = bits;
  shape.columns = ((2 * width - 1) >> bits) + 4;
  shape.rows = ((2 * height - 1) >> bits) + 4;
  return shape;
}

}  // namespace biseam::ring
