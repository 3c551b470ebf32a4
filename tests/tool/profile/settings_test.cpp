#include "profile/settings.hpp"

#include <gtest/gtest.h>

namespace biseam::profile {
namespace {

TEST(Settings, ValuesThatAreSetReplaceOthers) {
  LensSettings base;
  base.cx = 1;
  base.cy = 2;
  base.k = {1, 2, 3};
  base.fov = 190;
  base.gain = {1, 2, 1};
  LensSettings over;
  over.k = {0, 0, 1};
  over.vignette = {4, 5};
  over.cy = 5;
  over.p = 7;
  replace_settings(base, over);
  EXPECT_EQ(base.cx, 1);
  EXPECT_EQ(base.cy, 5);
  EXPECT_EQ(base.p, 7);
  EXPECT_EQ(base.fov, 190);
  EXPECT_EQ(base.k, (std::array{0.0, 0.0, 1.0}));
  EXPECT_EQ(base.vignette, (std::array{4.0, 5.0}));
  EXPECT_EQ(base.gain, (std::array{1.0, 2.0, 1.0}));
  EXPECT_FALSE(base.mount);
}

TEST(Settings, ASearchThatIsSwitchedOffReplacesOneThatIsOn) {
  BlendSettings base, over;
  base.search = true;
  over.search = false;
  replace_settings(base, over);
  EXPECT_EQ(base.search, false);
}

// The middle and the edges of a picture stay where they are.
TEST(Settings, LensValuesFollowThePicturesSize) {
  LensSettings lens;
  lens.cx = 479.5;
  lens.cy = -0.5;
  lens.p = 280;
  lens.fov = 200;
  lens.yaw = 3;
  const LensSettings scaled = scale_lens(lens, {960, 960}, {1920, 1920}, "cam.toml");
  EXPECT_DOUBLE_EQ(*scaled.cx, 959.5);
  EXPECT_DOUBLE_EQ(*scaled.cy, -0.5);
  EXPECT_DOUBLE_EQ(*scaled.p, 560);
  EXPECT_EQ(scaled.fov, 200);
  EXPECT_EQ(scaled.yaw, 3);
}

TEST(Settings, OpenLensValuesStayOpen) {
  const LensSettings scaled = scale_lens({}, {960, 960}, {480, 480}, "cam.toml");
  EXPECT_FALSE(scaled.cx || scaled.cy || scaled.p);
}

TEST(Settings, APictureOfAnotherShapeIsRefused) {
  try {
    scale_lens({}, {960, 960}, {1920, 1080}, "cam.toml");
    FAIL() << "taken";
  } catch (const Error& error) {
    EXPECT_STREQ(error.what(), "cam.toml: is for pictures of 960x960, this one is 1920x1080");
  }
}

TEST(Settings, BlendColumnsFollowThePanoramasWidthAndStayEven) {
  BlendSettings blend;
  blend.feather = 30;
  blend.trans_width = 33;
  blend.findpath_width = 60;
  blend.inv_scale = 2;
  blend.pyr_level = 4;
  const BlendSettings scaled = scale_blend(blend, 1920, 1440);
  EXPECT_EQ(scaled.feather, 22);
  EXPECT_EQ(scaled.trans_width, 24);
  EXPECT_EQ(scaled.findpath_width, 46);
  EXPECT_EQ(scaled.inv_scale, 2);
  EXPECT_EQ(scaled.pyr_level, 4);
}

TEST(Settings, BlendColumnsAtTheGivenWidthAreTakenAsTheyAre) {
  BlendSettings blend;
  blend.feather = 31;
  EXPECT_EQ(scale_blend(blend, 1920, 1920).feather, 31);
}

}  // namespace
}  // namespace biseam::profile
