#include "calibrate/circle.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace biseam::calibrate {
namespace {

struct Disc {
  int width, height;
  double cx, cy, radius, blur, surround, glare, noise;
};

cv::Mat1b draw(const Disc& disc) {
  std::mt19937 state(3);
  cv::Mat1b picture(disc.height, disc.width);
  for (int y = 0; y < disc.height; ++y) {
    for (int x = 0; x < disc.width; ++x) {
      const double dx = x - disc.cx, dy = y - disc.cy, r = std::hypot(dx, dy);
      const double inside = std::clamp((disc.radius - r) / disc.blur + 0.5, 0.0, 1.0);
      const double scene = 120 + 40 * std::sin(dx / 9) * std::cos(dy / 13) + 30 * std::sin(dx / 40);
      const double around = disc.surround + disc.glare * std::exp(-(r - disc.radius) / (0.03 * disc.width)) * (dy < 0);
      const double grain = (double(state()) / 4294967296.0 - 0.5) * 3.46 * disc.noise;
      picture(y, x) = cv::saturate_cast<unsigned char>(inside * scene + (1 - inside) * around + grain);
    }
  }
  return picture;
}

void expect_found(const Disc& disc, double tolerance) {
  const std::optional<Circle> circle = find_circle({draw(disc)});
  ASSERT_TRUE(circle);
  EXPECT_NEAR(circle->cx, disc.cx, tolerance);
  EXPECT_NEAR(circle->cy, disc.cy, tolerance);
  EXPECT_NEAR(circle->radius, disc.radius, tolerance);
}

TEST(Circle, WholeDiscIsFoundToPartsOfAPixel) { expect_found({640, 640, 317.3, 322.8, 301.5, 2, 0, 0, 0}, 0.3); }
TEST(Circle, NoisyAndGreySurround) { expect_found({640, 640, 317.3, 322.8, 301.5, 3, 14, 0, 3}, 0.5); }
TEST(Circle, CutOffOnAllSides) { expect_found({640, 640, 322.1, 316.4, 336.7, 2, 2, 0, 1}, 0.6); }
TEST(Circle, CutOffInAWiderPicture) { expect_found({800, 600, 405.2, 297.7, 330.4, 2, 2, 0, 1}, 0.6); }
TEST(Circle, GlareBesideIt) { expect_found({640, 640, 317.3, 322.8, 301.5, 3, 4, 45, 1}, 1.0); }

TEST(Circle, DarkPartsOfOneFrameAreBrightInOthers) {
  const Disc disc{640, 640, 317.3, 322.8, 301.5, 2, 0, 0, 1};
  std::vector<cv::Mat1b> frames = {draw(disc), draw(disc)};
  frames[0](cv::Rect(0, 0, 250, 640)) = 0;
  frames[1](cv::Rect(390, 0, 250, 640)) = 0;
  const std::optional<Circle> circle = find_circle(frames);
  ASSERT_TRUE(circle);
  EXPECT_NEAR(circle->cx, disc.cx, 0.5);
  EXPECT_NEAR(circle->radius, disc.radius, 0.5);
}

TEST(Circle, NoneInAFullOrEmptyPicture) {
  EXPECT_FALSE(find_circle({draw({640, 480, 320, 240, 700, 2, 0, 0, 1})}));
  EXPECT_FALSE(find_circle({cv::Mat1b(480, 640, static_cast<unsigned char>(3))}));
}

}  // namespace
}  // namespace biseam::calibrate
