#include "calibrate/positions.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "calibrate/strip.hpp"
#include "tool/calibrate/world.hpp"

namespace biseam::calibrate {
namespace {

TEST(Positions, ComeRowByRow) {
  for (const cv::Size size : {cv::Size(1, 1), cv::Size(8, 3), cv::Size(9, 8), cv::Size(23, 17)}) {
    int count = 0;
    Positions(size, [](int, int) { return ImagePoint{}; }).each([&](int x, int y, const ImagePoint&) {
      EXPECT_EQ(y * size.width + x, count);
      ++count;
    });
    EXPECT_EQ(count, size.area());
  }
}

// Third powers lie on cubics; what is left are roundings of numbers up to some 20,000.
TEST(Positions, AreExactWhereTheyLieOnCubics) {
  const auto exact = [](int x, int y) {
    const double third = double(x) * x * x, other = double(y) * y * y;
    return ImagePoint{0.5 * third - 3 * y, other + 2.0 * x * y, 0.01 * third + 0.02 * other};
  };
  Positions({31, 25}, exact).each([&](int x, int y, const ImagePoint& at) {
    const ImagePoint wanted = exact(x, y);
    EXPECT_NEAR(at.x, wanted.x, 1e-10);
    EXPECT_NEAR(at.y, wanted.y, 1e-10);
    EXPECT_NEAR(at.angle, wanted.angle, 1e-10);
  });
}

// The ring lies on a circle round the lens's centre: 3/128 of the radius times the fourth power of the angle between two nodes
// along it, and less across it, where the radius is nearly straight.
TEST(Positions, OfAStripAreTheProjectors) {
  constexpr StripSize kSize{960, 75};
  const Camera camera = some_camera(400);
  for (int k = 0; k < 2; ++k) {
    const Projector projector(camera, k);
    const auto exact = [&](int x, int y) { return projector.project(ring_direction(kSize.t(x), kSize.b(y))); };
    const double most = 2 * 3.0 / 128 * 200 * std::pow(Positions::kStep * kSize.pixel(), 4);
    double off = 0;
    Positions({kSize.columns(), kSize.rows}, exact).each([&](int x, int y, const ImagePoint& at) {
      const ImagePoint wanted = exact(x, y);
      off = std::max({off, std::abs(at.x - wanted.x), std::abs(at.y - wanted.y), 200 * std::abs(at.angle - wanted.angle)});
    });
    EXPECT_LT(off, most);
  }
}

}  // namespace
}  // namespace biseam::calibrate
