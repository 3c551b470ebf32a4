#include "camera/camera.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "camera/trigonometry.hpp"
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

TEST(Overlap, EndsAtThePicturesEdges) {
  const Camera camera = city_square();
  const Lens& lens = camera.lens[1];
  // Lens 1 is turned up by 1.48 degrees, so that its picture's upper edge lies higher still: the lower one ends first.
  const double below = (lens.height - 0.5 - lens.cy) / lens.p / kDegree - 90 - lens.turn.pitch;
  const double above0 = (camera.lens[0].cy + 0.5) / camera.lens[0].p / kDegree - 90;
  EXPECT_LT(below, above0 + 5);
  EXPECT_GT(overlap(camera) / kDegree, 4);
  EXPECT_LE(overlap(camera) / kDegree, std::min(above0, (lens.height - 0.5 - lens.cy) / lens.p / kDegree - 90 + 1.6));
}

TEST(Overlap, IsTheSameOfPicturesOfAnySize) {
  EXPECT_NEAR(overlap(city_square()), overlap(scaled_camera(city_square(), 3840)), 1e-4);
}

TEST(Overlap, AMountTurnsThePictureOnly) {
  Camera camera = straight_pair(195);
  for (Lens& lens : camera.lens) lens = scaled(usual_lens(1000, 1000, 195), 1000, 1000);
  const double before = overlap(camera);
  camera.lens[0].mount = 90;
  EXPECT_NEAR(before, overlap(camera), 1e-4);
}

}  // namespace
}  // namespace biseam::test
