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

// How unevenly something is spread over the pictures: its sum, times where it is in the upright world, over all of it.
class Unevenness {
 public:
  // small: a lens's picture, reduced.
  void add(const cv::Mat1f& small, int lens, const Circle& circle, const Frame& frame) {
    constexpr double kWithin = 0.9;  // of the radius
    const double across = double(frame.width) / small.cols, down = double(frame.height) / small.rows;
    cv::Point2d sum(0, 0);
    for (int y = 0; y < small.rows; ++y) {
      for (int x = 0; x < small.cols; ++x) {
        const cv::Point2d off(((x + 0.5) * across - circle.cx) / circle.radius, ((y + 0.5) * down - circle.cy) / circle.radius);
        if (off.dot(off) > kWithin * kWithin) continue;
        sum += small(y, x) * off;
        all_ += small(y, x);
      }
    }
    const Vec3 upright = transposed(rotation_about_z(frame.mount[lens])) * Vec3{sum.x, sum.y, 0};
    towards_ += cv::Point2d(lens == 0 ? -upright.x : upright.x, upright.y);
  }

  cv::Point2d share() const { return towards_ / std::max(1e-9, all_); }

 private:
  cv::Point2d towards_{0, 0};
  double all_ = 0;
};

cv::Mat1f reduced_to(const cv::Mat& picture, int side) {
  cv::Mat small;
  cv::Mat1f result;
  cv::resize(picture, small, {side, side}, 0, 0, cv::INTER_AREA);
  small.convertTo(result, CV_32F);
  return result;
}

// Slopes of the light, so far as they are fine; one strong edge counts no more than many weak ones.
cv::Mat1f detail_of(const cv::Mat1f& light) {
  constexpr double kMost = 20;  // code values a pixel
  cv::Mat1f across, down, detail;
  cv::Sobel(light, across, CV_32F, 1, 0, 3, 0.125);
  cv::Sobel(light, down, CV_32F, 0, 1, 3, 0.125);
  cv::magnitude(across, down, detail);
  return cv::min(detail, kMost);
}

}  // namespace

Vec3 lower_side(const std::vector<Pair>& pairs, const Circle (&circles)[2], const Frame& frame) {
  constexpr int kFine = 480, kCoarse = 64;
  constexpr double kLeast = 0.05;
  Unevenness light, detail;
  for (const Pair& pair : pairs) {
    for (int k = 0; k < 2; ++k) {
      const cv::Mat1f fine = reduced_to(pair.lens[k], kFine);
      light.add(reduced_to(fine, kCoarse), k, circles[k], frame);
      detail.add(reduced_to(detail_of(fine), kCoarse), k, circles[k], frame);
    }
  }
  const cv::Point2d lower = detail.share() - light.share();
  const bool across = std::abs(lower.x) > std::abs(lower.y);
  const double most = across ? lower.x : lower.y;
  if (std::abs(most) < kLeast) return {0, 0, 0};
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
