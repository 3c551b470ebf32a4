#include "camera/lens.hpp"

#include "camera/trigonometry.hpp"

namespace biseam {

Lens usual_lens(int width, int height, double fov) noexcept {
  Lens lens;
  lens.width = width;
  lens.height = height;
  lens.cx = (width - 1) / 2.0;
  lens.cy = (height - 1) / 2.0;
  lens.fov = fov;
  lens.p = (width < height ? width : height) / 2.0 / (fov / 2 * kDegree);
  return lens;
}

Lens scaled(const Lens& lens, int width, int height) noexcept {
  if (width == lens.width && height == lens.height) return lens;
  // The edge of the first pixel stays, not its middle.
  const double scale = double(width) / lens.width;
  Lens other = lens;
  other.width = width;
  other.height = height;
  other.cx = (lens.cx + 0.5) * scale - 0.5;
  other.cy = (lens.cy + 0.5) * scale - 0.5;
  other.p = lens.p * scale;
  return other;
}

// Newton's steps, halving where one would leave the interval that holds the solution; 64 halvings alone are enough.  Where
// Newton goes to and fro between neighbouring numbers, nothing is left to halve.
double angle_of_radius(const Lens& lens, double wanted, double last) noexcept {
  if (!(wanted > 0)) return 0;
  if (wanted >= radius(lens, last)) return last;
  double low = 0, high = last, angle = wanted / lens.p;
  for (int i = 0; i < 64; ++i) {
    if (!(angle > low && angle < high)) {
      angle = 0.5 * (low + high);
      if (!(angle > low && angle < high)) return low;
    }
    const double excess = radius(lens, angle) - wanted;
    if (excess == 0) return angle;
    (excess < 0 ? low : high) = angle;
    const double slope = radius_slope(lens, angle), next = slope > 0 ? angle - excess / slope : low;
    if (next == angle) return angle;
    angle = next;
  }
  return angle > low && angle < high ? angle : low;
}

}  // namespace biseam
