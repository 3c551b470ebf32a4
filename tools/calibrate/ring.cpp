#include "calibrate/ring.hpp"

#include <cmath>

namespace biseam::calibrate {
namespace {

// Directions beyond the rim count as well: there the guess may be wrong.
Camera widened(const Values& values, const Frame& frame) {
  Values wide = values;
  wide[kRim] += 10;
  return camera_of(wide, frame);
}

RingPoint ring_point(const Vec3& d) { return {arctangent(d.y, d.x), arctangent(d.z, std::sqrt(d.x * d.x + d.y * d.y))}; }

double wrapped(double angle) { return angle > kPi ? angle - 2 * kPi : angle < -kPi ? angle + 2 * kPi : angle; }

double shrinking(const RingPoint& first, const RingPoint& second) { return sine_cosine(0.5 * (first.b + second.b)).cosine; }

// Mean of both lenses' pixels per radian across the ring, over what is usual for pictures of this size, and its slopes.
struct Steepness {
  double value = 0;
  Row slopes{};
};

Steepness steepness_of(const Camera& camera) {
  constexpr double kSquare = kPi * kPi / 4;
  const double usual = 0.3 * camera.lens[0].width;
  Steepness steepness;
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = camera.lens[k];
    const double half = k == 0 ? -0.5 : 0.5, scale = 0.5 * lens.p / usual, slope = 0.5 * radius_slope(lens, kPi / 2) / usual;
    const double first = 3 * kSquare * scale, second = 5 * kSquare * kSquare * scale,
                 third = 7 * kSquare * kSquare * kSquare * scale;
    steepness.value += slope;
    steepness.slopes[kScale] += slope;
    steepness.slopes[kScaleRatio] += slope * half;
    steepness.slopes[kK1] += first;
    steepness.slopes[kK1Apart] += first * half;
    steepness.slopes[kK2] += second;
    steepness.slopes[kK2Apart] += second * half;
    steepness.slopes[kK3] += third;
  }
  return steepness;
}

constexpr double kImpossible = 1e6;  // pixels

// Of one lens.
enum Own { kLogScale, kFirst, kSecond, kThird, kCx, kCy, kOwnYaw, kOwnPitch, kOwnRoll, kOwn };

struct OwnSlopes {
  Vec3 direction;
  double t[kOwn], b[kOwn];
};

class Differentiator {
 public:
  Differentiator(const Camera& camera, int index) : lens_(camera.lens[index]), projector_(camera, index) {
    for (int i = 0; i < 3; ++i) {
      constexpr double kStep = 1e-4;  // degrees
      Camera moved[2] = {camera, camera};
      for (int side = 0; side < 2; ++side) {
        Turn& turn = moved[side].lens[index].turn;
        (i == 0 ? turn.yaw : i == 1 ? turn.pitch : turn.roll) += side == 0 ? -kStep : kStep;
      }
      const Matrix3 low = Projector(moved[0], index).to_picture(), high = Projector(moved[1], index).to_picture();
      for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 3; ++x) turned_[i].m[y][x] = (high.m[y][x] - low.m[y][x]) / (2 * kStep);
      }
    }
  }

  OwnSlopes slopes(cv::Point2d at) const {
    const double dx = at.x - lens_.cx, dy = at.y - lens_.cy, rho = std::sqrt(dx * dx + dy * dy);
    const double cosine = dx / rho, sine = dy / rho;
    const double a = angle_of_radius(lens_, rho, lens_.fov / 2 * kDegree), slope = radius_slope(lens_, a), u = a * a;
    const SineCosine angle = sine_cosine(a);
    // Unit vectors of the picture's frame, along which the direction moves with its angle and its azimuth.
    const Vec3 outwards{angle.cosine * cosine, angle.cosine * sine, -angle.sine}, around{-sine, cosine, 0};
    const Matrix3 to_world = transposed(projector_.to_picture());
    const Vec3 by_angle = to_world * outwards, by_azimuth = to_world * around;
    const double across = angle.sine / rho;
    const Vec3 d = to_world * Vec3{across * dx, across * dy, angle.cosine};
    OwnSlopes slopes;
    slopes.direction = d;
    const auto put = [&](int parameter, double along_angle, double along_azimuth) {
      set(slopes, parameter, d,
          {along_angle * by_angle.x + along_azimuth * by_azimuth.x, along_angle * by_angle.y + along_azimuth * by_azimuth.y,
           along_angle * by_angle.z + along_azimuth * by_azimuth.z});
    };
    put(kLogScale, -rho / slope, 0);
    put(kFirst, -lens_.p * a * u / slope, 0);
    put(kSecond, -lens_.p * a * u * u / slope, 0);
    put(kThird, -lens_.p * a * u * u * u / slope, 0);
    put(kCx, -cosine / slope, across * sine);
    put(kCy, -sine / slope, -across * cosine);
    const Vec3 ray{angle.sine * cosine, angle.sine * sine, angle.cosine};
    for (int i = 0; i < 3; ++i) set(slopes, kOwnYaw + i, d, transposed(turned_[i]) * ray);
    return slopes;
  }

 private:
  static void set(OwnSlopes& slopes, int parameter, const Vec3& d, const Vec3& moves) {
    const double square = d.x * d.x + d.y * d.y;
    slopes.t[parameter] = (d.x * moves.y - d.y * moves.x) / square;
    slopes.b[parameter] = moves.z / std::sqrt(square);
  }

  Lens lens_;
  Projector projector_;
  Matrix3 turned_[3];
};

}  // namespace

double across_scale(const Camera& camera) { return steepness_of(camera).value; }

std::vector<Remainder> remainders_of(const Values& values, const Frame& frame, const std::vector<Match>& matches) {
  const Camera camera = widened(values, frame);
  const Projector lens[2] = {Projector(camera, 0), Projector(camera, 1)};
  const double steepness = steepness_of(camera).value;
  double reach[2];  // pixels from the centre
  for (int k = 0; k < 2; ++k) reach[k] = radius(camera.lens[k], camera.lens[k].fov / 2 * kDegree);
  std::vector<Remainder> remainders;
  remainders.reserve(matches.size());
  for (const Match& match : matches) {
    const RingPoint first = ring_point(lens[0].unproject(match.at[0].x, match.at[0].y));
    const RingPoint second = ring_point(lens[1].unproject(match.at[1].x, match.at[1].y));
    bool drawn = true;
    for (int k = 0; k < 2; ++k) {
      drawn = drawn && std::hypot(match.at[k].x - camera.lens[k].cx, match.at[k].y - camera.lens[k].cy) < reach[k];
    }
    if (!drawn) {  // a lens that can't draw what it drew
      remainders.push_back({{kImpossible, kImpossible}, first});
      continue;
    }
    remainders.push_back({{wrapped(second.t - first.t) * shrinking(first, second) * kPixelsPerRadian,
                           (first.b - second.b) * steepness * kPixelsPerRadian},
                          first});
  }
  return remainders;
}

std::vector<Slopes> slopes_of(const Values& values, const Frame& frame, const std::vector<Match>& matches) {
  const Camera camera = widened(values, frame);
  const Differentiator lens[2] = {Differentiator(camera, 0), Differentiator(camera, 1)};
  const Steepness steepness = steepness_of(camera);
  std::vector<Slopes> all;
  all.reserve(matches.size());
  for (const Match& match : matches) {
    const OwnSlopes own[2] = {lens[0].slopes(match.at[0]), lens[1].slopes(match.at[1])};
    const RingPoint first = ring_point(own[0].direction), second = ring_point(own[1].direction);
    const double along = shrinking(first, second) * kPixelsPerRadian;
    Slopes slopes{};
    for (std::size_t p = 0; p < kParameters; ++p) slopes.b[p] = kPixelsPerRadian * (first.b - second.b) * steepness.slopes[p];
    const auto put = [&](Parameter parameter, int of, double zero, double one) {
      slopes.t[parameter] = along * (one * own[1].t[of] - zero * own[0].t[of]);
      slopes.b[parameter] += kPixelsPerRadian * steepness.value * (zero * own[0].b[of] - one * own[1].b[of]);
    };
    put(kScale, kLogScale, 1, 1);
    put(kScaleRatio, kLogScale, -0.5, 0.5);
    put(kK1, kFirst, 1, 1);
    put(kK3, kThird, 1, 1);
    put(kK1Apart, kFirst, -0.5, 0.5);
    put(kK2, kSecond, 1, 1);
    put(kK2Apart, kSecond, -0.5, 0.5);
    put(kCx0, kCx, 1, 0);
    put(kCy0, kCy, 1, 0);
    put(kCx1, kCx, 0, 1);
    put(kCy1, kCy, 0, 1);
    put(kYaw, kOwnYaw, 0, 1);
    put(kPitch, kOwnPitch, 0, 1);
    put(kRoll, kOwnRoll, 0, 1);
    all.push_back(slopes);
  }
  return all;
}

}  // namespace biseam::calibrate
