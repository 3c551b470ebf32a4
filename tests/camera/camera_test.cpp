#include "camera/camera.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "camera/trigonometry.hpp"
#include "ring/reference.hpp"
#include "support/cameras.hpp"

namespace biseam::test {
namespace {

Camera straight_pair(double fov) {
  Camera camera;
  camera.lens[0] = camera.lens[1] = usual_lens(1000, 1000, fov);
  return camera;
}

TEST(Overlap, IsWhatTheCirclesShare) {
  EXPECT_NEAR(7.5, overlap(straight_pair(195)) / kDegree, 0.002);
  EXPECT_NEAR(-5, overlap(straight_pair(170)) / kDegree, 0.002);
}

TEST(Overlap, IsAtMostAnEighthOfATurn) { EXPECT_LE(overlap(straight_pair(299)), kPi / 4); }

TEST(Overlap, CountsTheWorseLens) {
  Camera camera = straight_pair(195);
  camera.lens[0] = usual_lens(1000, 1000, 187);
  EXPECT_NEAR(3.5, overlap(camera) / kDegree, 0.002);
}

TEST(Overlap, ATurnTakesAsMuchOfOneSide) {
  Camera camera = straight_pair(195);
  camera.lens[1].turn.pitch = 2;
  EXPECT_NEAR(5.5, overlap(camera) / kDegree, 0.002);
  camera.lens[1].turn = {0, 0, 30};
  EXPECT_NEAR(7.5, overlap(camera) / kDegree, 0.002);
}

// Against a search in small steps over the definition.
TEST(Overlap, EndsAtThePicturesEdges) {
  for (Camera camera : {city_square(), bent_pair()}) {
    camera.lens[1].turn.yaw = 1.5;
    double least = 45;
    for (int k = 0; k < 2; ++k) {
      const Lens& lens = camera.lens[k];
      for (int i = 0; i < 720; ++i) {
        const double t = i * 0.5 * kDegree;
        const auto seen = [&](double b) {
          const double level = std::cos(b * kDegree), beyond = std::sin(b * kDegree) * (k == 0 ? 1 : -1);
          const Place at = reference_place(camera, k, {level * std::cos(t), level * std::sin(t), beyond});
          return at.angle <= lens.fov / 2 * kDegree && at.x >= -0.5 && at.x <= lens.width - 0.5 && at.y >= -0.5 &&
                 at.y <= lens.height - 0.5;
        };
        double b = -5;
        for (const double step : {1.0, 0.02}) {
          while (b < least && seen(b)) b += step;
          b -= step;
        }
        least = std::min(least, b + 0.02);
      }
    }
    EXPECT_NEAR(least, overlap(camera) / kDegree, 0.04);
    EXPECT_LT(least, 13);  // where the circles alone would end
  }
}

TEST(Overlap, IsTheSameOfPicturesOfAnySize) {
  EXPECT_NEAR(overlap(city_square()), overlap(scaled_camera(city_square(), 3840)), 1e-4);
}

TEST(Overlap, AMountTurnsThePictureOnly) {
  Camera camera = straight_pair(195);
  const double before = overlap(camera);
  camera.lens[0].mount = 90;
  EXPECT_NEAR(before, overlap(camera), 1e-4);
}

}  // namespace
}  // namespace biseam::test
