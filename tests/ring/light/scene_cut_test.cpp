#include "ring/light/scene_cut.hpp"

#include <gtest/gtest.h>

#include "ring/light/own_strips.hpp"

namespace biseam::test {
namespace {

using namespace ring;

constexpr StripShape kShape{480, 28};

RingImage image_of(const LitScene& scene, int lens = 0) {
  const OwnStrips strips(kShape, scene);
  return ring_image(strips.planes[lens][0].data(), kShape);
}

LitScene turned(double yaw, double noise = 2) {
  LitScene scene{[turned = rotation({yaw, 0, 0})](const Vec3& d) { return gravel(turned * d); }, {}};
  scene.noise = noise;
  return scene;
}

TEST(SceneCut, NoiseMotionAndFlashesAreNone) {
  const RingImage still = image_of(turned(0));
  EXPECT_FALSE(is_other_scene(still, image_of(turned(0))));
  EXPECT_FALSE(is_other_scene(still, image_of(turned(3))));
  LitScene flash = turned(0);
  flash.lens[0].exposure = 1;
  EXPECT_FALSE(is_other_scene(still, image_of(flash)));
  const LitScene black{[](const Vec3&) { return Rgb{0, 0, 0}; }, {}, 2};
  EXPECT_FALSE(is_other_scene(image_of(black), image_of(black)));
}

TEST(SceneCut, AnotherSceneIsOne) {
  EXPECT_TRUE(is_other_scene(image_of(turned(0)), image_of(turned(100))));
  EXPECT_TRUE(is_other_scene(image_of(turned(-60)), image_of(turned(60))));
}

}  // namespace
}  // namespace biseam::test
