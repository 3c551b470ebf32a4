#include "calibrate/circle.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>

#include "camera/trigonometry.hpp"

namespace biseam::calibrate {
namespace {

constexpr int kRays = 720;
constexpr double kLeastRadius = 0.3, kMostRadius = 0.8;  // of the shorter side
constexpr double kLeastShare = 0.08;                     // of the circumference
constexpr float kLeastStep = 5;                          // code values from the surround to the picture

struct Surround {
  float level, noise;
};

// The darkest of the four corners.  What all the others show may be glare.
Surround surround_of(const cv::Mat1f& picture) {
  const int side = std::max(4, std::min(picture.rows, picture.cols) / 32);
  Surround darkest{1e9f, 0};
  for (int corner = 0; corner < 4; ++corner) {
    const int x = corner % 2 == 0 ? 0 : picture.cols - side, y = corner / 2 == 0 ? 0 : picture.rows - side;
    cv::Scalar mean, deviation;
    cv::meanStdDev(picture(cv::Rect(x, y, side, side)), mean, deviation);
    if (mean[0] < darkest.level) darkest = {float(mean[0]), float(deviation[0])};
  }
  return darkest;
}

// Light along a ray, outwards in steps of half a pixel, as far as the picture goes.
std::vector<float> ray_profile(const cv::Mat1f& picture, cv::Point2d from, cv::Point2d along, double first, double last) {
  std::vector<float> profile;
  for (double r = first; r <= last; r += 0.5) {
    const double x = from.x + r * along.x, y = from.y + r * along.y;
    const int left = int(std::floor(x)), top = int(std::floor(y));
    if (left < 0 || top < 0 || left + 1 >= picture.cols || top + 1 >= picture.rows) break;
    const float fx = float(x - left), fy = float(y - top);
    const float *upper = picture[top] + left, *lower = picture[top + 1] + left;
    profile.push_back((1 - fy) * ((1 - fx) * upper[0] + fx * upper[1]) + fy * ((1 - fx) * lower[0] + fx * lower[1]));
  }
  return profile;
}

// The place of a profile where the picture ends: half way down the step after which all is darker, glare as well.  Negative: it
// does not end.  soft: samples across which a rim may be blurred.
double rim_of(const std::vector<float>& profile, const Surround& surround, int soft) {
  const int count = int(profile.size()), window = 4 * soft;
  if (count < 3 * window) return -1;
  std::vector<float> sums(1, 0);  // of the samples before each
  for (const float value : profile) sums.push_back(sums.back() + value);
  const auto mean = [&](int from, int to) { return (sums[std::size_t(to)] - sums[std::size_t(from)]) / float(to - from); };
  float brightest = 0, most = std::max(kLeastStep, 4 * surround.noise);
  int best = -1;
  for (int i = count - 2 * soft; i >= window; --i) {
    brightest = std::max(brightest, profile[std::size_t(i + soft)]);
    const float step = mean(i - window, i - soft) - brightest;
    if (step > most) {
      most = step;
      best = i;
    }
  }
  if (best < 0) return -1;
  const float half = (mean(best - window, best - soft) + mean(best + soft, std::min(count, best + window))) / 2;
  int i = std::min(count - 2, best + 2 * soft);
  while (i > best - 2 * soft && profile[std::size_t(i)] < half) --i;
  const float a = profile[std::size_t(i)], b = profile[std::size_t(i) + 1];
  return i + (a > b ? double((a - half) / (a - b)) : 0.5);
}

std::vector<cv::Point2d> rim_points(const cv::Mat1f& picture, const Surround& surround, cv::Point2d centre) {
  const double side = std::min(picture.cols, picture.rows);
  std::vector<cv::Point2d> points;
  for (int i = 0; i < kRays; ++i) {
    const SineCosine t = sine_cosine(i * (2 * kPi / kRays));
    const cv::Point2d along(t.cosine, t.sine);
    const double first = 0.5 * kLeastRadius * side;
    const double at = rim_of(ray_profile(picture, centre, along, first, 2 * side), surround, std::max(4, int(side / 120)));
    if (at >= 0) points.push_back(centre + (first + 0.5 * at) * along);
  }
  return points;
}

// Through three points; radius 0 where they lie on a line.
Circle circle_through(cv::Point2d a, cv::Point2d b, cv::Point2d c) {
  const cv::Point2d u = b - a, v = c - a;
  const double twice = 2 * u.cross(v);
  if (std::abs(twice) < 1e-6) return {};
  const double uu = u.dot(u), vv = v.dot(v);
  const cv::Point2d middle((v.y * uu - u.y * vv) / twice, (u.x * vv - v.x * uu) / twice);
  return {a.x + middle.x, a.y + middle.y, std::sqrt(middle.dot(middle)), 0, 0};
}

double distance(const Circle& circle, cv::Point2d point) {
  return std::hypot(point.x - circle.cx, point.y - circle.cy) - circle.radius;
}

// The circle that most of the points lie on.
Circle common_circle(const std::vector<cv::Point2d>& points, cv::Size size, double tolerance) {
  const double side = std::min(size.width, size.height);
  std::uint32_t state = 1;
  const auto draw = [&] {
    state = state * 1664525u + 1013904223u;
    return points[(state >> 8) % points.size()];
  };
  Circle best;
  int most = 0;
  for (int attempt = 0; attempt < 2000; ++attempt) {
    const Circle circle = circle_through(draw(), draw(), draw());
    if (circle.radius < kLeastRadius * side || circle.radius > kMostRadius * side) continue;
    if (std::abs(circle.cx - size.width / 2.0) > side / 4 || std::abs(circle.cy - size.height / 2.0) > side / 4) continue;
    int near = 0;
    for (const cv::Point2d& point : points) near += std::abs(distance(circle, point)) < tolerance;
    if (near > most) {
      most = near;
      best = circle;
    }
  }
  return best;
}

// 1.48 times the median distance of what lies within the tolerance: the standard deviation if that is normal.
double spread(const Circle& circle, const std::vector<cv::Point2d>& points, double tolerance) {
  std::vector<double> distances;
  for (const cv::Point2d& point : points) {
    const double off = std::abs(distance(circle, point));
    if (off < tolerance) distances.push_back(off);
  }
  if (distances.empty()) return 0;
  const auto middle = distances.begin() + std::ptrdiff_t(distances.size() / 2);
  std::nth_element(distances.begin(), middle, distances.end());
  return 1.48 * *middle;
}

// Least squares with weights that fall to nothing at some deviations from the circle (Tukey's).
Circle refined(Circle circle, const std::vector<cv::Point2d>& points, double tolerance) {
  constexpr double kDeviations = 4.7, kLeastDeviation = 0.1;
  for (int step = 0; step < 20; ++step) {
    circle.deviation = std::max(kLeastDeviation, spread(circle, points, tolerance));
    const double scale = kDeviations * circle.deviation;
    cv::Matx33d normal = cv::Matx33d::eye() * 1e-9;
    cv::Vec3d right(0, 0, 0);
    int used = 0;
    for (const cv::Point2d& point : points) {
      const double off = distance(circle, point), q = off / scale;
      if (std::abs(q) >= 1) continue;
      const double weight = (1 - q * q) * (1 - q * q), length = off + circle.radius;
      const cv::Vec3d row((point.x - circle.cx) / length, (point.y - circle.cy) / length, 1);
      normal += weight * (row * row.t());
      right += weight * off * row;
      ++used;
    }
    if (used < 12) return {};
    const cv::Vec3d change = normal.solve(right, cv::DECOMP_CHOLESKY);
    circle.cx += change[0];
    circle.cy += change[1];
    circle.radius += change[2];
    circle.share = double(used) / kRays;
  }
  return circle;
}

}  // namespace

std::optional<Circle> find_circle(const std::vector<cv::Mat1b>& frames) {
  cv::Mat1f picture(frames.front().size(), 0.0f);
  cv::Mat1b smooth;
  for (const cv::Mat1b& frame : frames) {
    cv::blur(frame, smooth, {3, 3});
    cv::accumulate(smooth, picture);
  }
  picture /= double(frames.size());
  const Surround surround = surround_of(picture);
  const double tolerance = std::max(1.5, std::min(picture.cols, picture.rows) / 250.0);
  Circle circle{(picture.cols - 1) / 2.0, (picture.rows - 1) / 2.0, 0, 0, 0};
  for (int round = 0; round < 2; ++round) {  // from the middle of the picture, then from that of the circle
    const std::vector<cv::Point2d> points = rim_points(picture, surround, {circle.cx, circle.cy});
    if (points.size() < kLeastShare * kRays) return std::nullopt;
    circle = common_circle(points, picture.size(), tolerance);
    if (circle.radius == 0) return std::nullopt;
    circle = refined(circle, points, tolerance);
    if (circle.share < kLeastShare) return std::nullopt;
  }
  return circle;
}

}  // namespace biseam::calibrate
