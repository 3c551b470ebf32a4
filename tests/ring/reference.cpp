#include "ring/reference.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace biseam::test {
namespace {

constexpr double pi = std::numbers::pi;

double radians(double degrees) { return degrees * pi / 180; }

// What looks along z looks to the right, up, and is turned clockwise: each about the axes of the frame it is turned in.
Vec3 rolled(const Vec3& v, double a) {
  return {std::cos(a) * v.x - std::sin(a) * v.y, std::sin(a) * v.x + std::cos(a) * v.y, v.z};
}
Vec3 pitched(const Vec3& v, double a) {
  return {v.x, std::cos(a) * v.y - std::sin(a) * v.z, std::sin(a) * v.y + std::cos(a) * v.z};
}
Vec3 yawed(const Vec3& v, double a) {
  return {std::cos(a) * v.x + std::sin(a) * v.z, v.y, std::cos(a) * v.z - std::sin(a) * v.x};
}

double bilinear_weight(double d) { return d < 1 ? 1 - d : 0; }

double cubic_weight(double d) {
  if (d < 1) return ((0.63 * d - 1.26) * d - 0.37) * d + 1;
  if (d < 2) return ((-0.21 * (d - 1) + 0.63) * (d - 1) - 0.42) * (d - 1);
  return 0;
}

double spline36_weight(double d) {
  if (d < 1) return ((13.0 / 11 * d - 453.0 / 209) * d - 3.0 / 209) * d + 1;
  if (d < 2) return ((-6.0 / 11 * (d - 1) + 270.0 / 209) * (d - 1) - 156.0 / 209) * (d - 1);
  if (d < 3) return ((1.0 / 11 * (d - 2) - 45.0 / 209) * (d - 2) + 26.0 / 209) * (d - 2);
  return 0;
}

double weight(Kernel kernel, double distance) {
  const double d = std::abs(distance);
  switch (kernel) {
    case Kernel::bilinear:
      return bilinear_weight(d);
    case Kernel::cubic:
      return cubic_weight(d);
    default:
      return spline36_weight(d);
  }
}

int reach_of(Kernel kernel) { return kernel == Kernel::bilinear ? 1 : kernel == Kernel::cubic ? 2 : 3; }

struct Taps {
  int first;
  std::vector<double> weights;  // of sum 1
};

Taps taps(Kernel kernel, double position, double widening) {
  const double reach = reach_of(kernel) * widening;
  Taps t;
  t.first = int(std::ceil(position - reach));
  double sum = 0;
  for (int i = t.first; i <= std::floor(position + reach); ++i) {
    t.weights.push_back(weight(kernel, (i - position) / widening));
    sum += t.weights.back();
  }
  for (double& w : t.weights) w /= sum;
  return t;
}

// Positions in a picture's plane of the samples of a panorama's plane.
class Mapping {
 public:
  Mapping(const ReferenceFrame& frame, const ReferencePlane& grid, const ReferencePlane& picture, int lens)
      : frame_(frame), grid_(grid), picture_(picture), lens_(lens) {}

  Place operator()(double x, double y) const {
    const Vec3 d = reference_direction(frame_.view, grid_.sub_x * x + grid_.offset_x, grid_.sub_y * y + grid_.offset_y);
    const Place luma = reference_place(frame_.camera, lens_, d);
    return {(luma.x - picture_.offset_x) / picture_.sub_x, (luma.y - picture_.offset_y) / picture_.sub_y, luma.angle};
  }

  Shrink shrink(double x, double y) const {
    const Place left = (*this)(x - 0.5, y), right = (*this)(x + 0.5, y), above = (*this)(x, y - 0.5),
                below = (*this)(x, y + 0.5);
    return {right.x - left.x, below.x - above.x, right.y - left.y, below.y - above.y};
  }

 private:
  const ReferenceFrame& frame_;
  const ReferencePlane &grid_, &picture_;
  int lens_;
};

}  // namespace

Vec3 reference_direction(const View& view, double x, double y) {
  const double longitude = 2 * pi * (x + 0.5) / view.width - pi, latitude = pi * (y + 0.5) / view.height - pi / 2;
  const Vec3 d = {std::cos(latitude) * std::sin(longitude), std::sin(latitude), std::cos(latitude) * std::cos(longitude)};
  return yawed(pitched(rolled(d, radians(view.turn.roll)), radians(view.turn.pitch)), radians(view.turn.yaw));
}

Place reference_place(const Camera& camera, int index, const Vec3& direction) {
  const Lens& lens = camera.lens[index];
  Vec3 d = index == 1 ? direction : Vec3{-direction.x, direction.y, -direction.z};
  d = rolled(pitched(yawed(d, radians(-lens.turn.yaw)), radians(-lens.turn.pitch)), radians(-lens.turn.roll));
  const double across = std::hypot(d.x, d.y), a = std::atan2(across, d.z);
  const double r = lens.p * (a + lens.k[0] * std::pow(a, 3) + lens.k[1] * std::pow(a, 5) + lens.k[2] * std::pow(a, 7));
  const double u = across == 0 ? 0 : r * d.x / across, v = across == 0 ? 0 : r * d.y / across;
  switch (lens.mount) {  // right goes down, left or up
    case 90:
      return {lens.cx - v, lens.cy + u, a};
    case 180:
      return {lens.cx - u, lens.cy - v, a};
    case 270:
      return {lens.cx + v, lens.cy - u, a};
    default:
      return {lens.cx + u, lens.cy + v, a};
  }
}

RingPlace reference_ring(const Vec3& direction) {
  const double t = std::atan2(direction.y, direction.x);
  return {t < 0 ? t + 2 * pi : t, std::atan2(direction.z, std::hypot(direction.x, direction.y))};
}

double ReferencePlane::at(int x, int y) const {
  const int column = std::clamp(x, 0, width - 1), row = std::clamp(y, 0, height - 1);
  return samples[std::size_t(row) * std::size_t(width) + std::size_t(column)];
}

Widening covering(const Shrink& shrink) {
  return {std::max(1.0, std::hypot(shrink.xx, shrink.xy)), std::max(1.0, std::hypot(shrink.yx, shrink.yy))};
}

double reference_sample(const ReferencePlane& plane, Kernel kernel, double x, double y, const Widening& widening) {
  const Taps across = taps(kernel, x, widening.x), down = taps(kernel, y, widening.y);
  double sum = 0;
  for (std::size_t j = 0; j < down.weights.size(); ++j) {
    double row = 0;
    for (std::size_t i = 0; i < across.weights.size(); ++i) {
      row += across.weights[i] * plane.at(across.first + int(i), down.first + int(j));
    }
    sum += down.weights[j] * row;
  }
  return sum;
}

std::vector<double> reference_panorama(const ReferenceFrame& frame, const ReferencePlane (&pictures)[2],
                                       const ReferencePlane& grid) {
  std::vector<double> out;
  out.reserve(std::size_t(grid.width) * std::size_t(grid.height));
  const Mapping mapping[2] = {{frame, grid, pictures[0], 0}, {frame, grid, pictures[1], 1}};
  for (int y = 0; y < grid.height; ++y) {
    for (int x = 0; x < grid.width; ++x) {
      const auto sample = [&](int lens) {
        const Place at = mapping[lens](x, y);
        return reference_sample(pictures[lens], frame.kernel, at.x, at.y, frame.widening(mapping[lens].shrink(x, y)));
      };
      const RingPlace place =
          reference_ring(reference_direction(frame.view, grid.sub_x * x + grid.offset_x, grid.sub_y * y + grid.offset_y));
      if (std::abs(place.b) <= frame.half_width) {
        out.push_back(frame.blend({place, x, y, sample}));
      } else {
        out.push_back(sample(place.b > 0 ? 1 : 0));
      }
    }
  }
  return out;
}

}  // namespace biseam::test
