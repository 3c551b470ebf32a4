#include "calibrate/upright.hpp"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace biseam::calibrate {
namespace {

// Quarter turns, clockwise as lens 1 looks, after which a direction in x and y points down rather than where it does.
int quarters_to(cv::Point2d down) {
  const double lower[4] = {down.y, down.x, -down.y, -down.x};
  const int turns = int(std::max_element(lower, lower + 4) - lower);
  return lower[turns] < 1.2 * lower[0] ? 0 : turns;
}

}  // namespace

Vec3 dark_side(const std::vector<Pair>& pairs, const Circle (&circles)[2], const Frame& frame) {
  constexpr int kSide = 64;
  constexpr double kLeast = 0.05;  // of the light, at a distance of a radius
  cv::Point2d dark(0, 0);
  double all = 0;
  for (int k = 0; k < 2; ++k) {
    const Circle& circle = circles[k];
    const double across = double(frame.width) / kSide, down = double(frame.height) / kSide;
    cv::Point2d sum(0, 0);
    cv::Mat1b small;
    for (const Pair& pair : pairs) {
      cv::resize(pair.lens[k], small, {kSide, kSide}, 0, 0, cv::INTER_AREA);
      for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
          const cv::Point2d off(((x + 0.5) * across - circle.cx) / circle.radius,
                                ((y + 0.5) * down - circle.cy) / circle.radius);
          if (off.dot(off) > 0.8) continue;
          sum -= small(y, x) * off;
          all += small(y, x);
        }
      }
    }
    const Vec3 upright = transposed(rotation_about_z(frame.mount[k])) * Vec3{sum.x, sum.y, 0};
    dark += cv::Point2d(k == 0 ? -upright.x : upright.x, upright.y);
  }
  const bool across = std::abs(dark.x) > std::abs(dark.y);
  const double most = across ? dark.x : dark.y;
  if (std::abs(most) < kLeast * all) return {0, 0, 0};
  const double sign = most > 0 ? 1 : -1;
  return across ? Vec3{sign, 0, 0} : Vec3{0, sign, 0};
}

void set_upright(Problem& problem, Explanations& found) {
  constexpr double kLeastParallax = 0.6;  // pixels
  Vec3& down = problem.prior.down;
  const int turns = quarters_to({down.x, down.y});
  cv::Point2d near(0, 0);
  const std::vector<Ground>& grounds = found.better().grounds;
  for (const Ground& ground : grounds) near += cv::Point2d(ground.x, ground.y) / double(grounds.size());
  if (turns == 0 || (cv::norm(near) >= kLeastParallax && quarters_to(near) != turns)) return;
  problem.frame.mount[0] = (problem.frame.mount[0] + 90 * turns) % 360;
  problem.frame.mount[1] = (problem.frame.mount[1] + 360 - 90 * turns) % 360;
  for (int i = 0; i < turns; ++i) {
    down = {-down.y, down.x, 0};
    for (Solution* solution : {&found.still, &found.ground}) {
      const double yaw = solution->values[kYaw];
      solution->values[kYaw] = solution->values[kPitch];
      solution->values[kPitch] = -yaw;
      for (Ground& ground : solution->grounds) ground = {-ground.y, ground.x, ground.z};
    }
  }
}

}  // namespace biseam::calibrate
