#include "profile/read.hpp"

#include <gtest/gtest.h>

namespace biseam::profile {
namespace {

std::string refusal(const std::string& text) {
  try {
    read(text, "cam.toml");
  } catch (const Error& error) {
    const std::string line = error.what();
    EXPECT_EQ(line.find('\n'), std::string::npos) << line;
    return line;
  }
  ADD_FAILURE() << "taken: " << text;
  return "";
}

TEST(Profile, every_key_is_read) {
  const CameraSettings s = read(R"(
width = 1920
[picture]
width = 960
height = 964
[lens0]
cx = 475
cy = 471.5
p = 280
fov = 205
mount = 90
[lens1]
cx = 478
cy = 478
p = 277.25
fov = 204
mount = 270
yaw = -0.6
pitch = -1.8
roll = 0.4
[blend]
feather = 32
trans_width = 16
pyr_level = 4
[seam]
search = false
findpath_width = 48
inv_scale = 2
)",
                                "cam.toml");
  EXPECT_EQ(s.width, 1920);
  EXPECT_EQ(s.picture, (Size{960, 964}));
  EXPECT_EQ(s.lens[0].cx, 475);
  EXPECT_EQ(s.lens[0].cy, 471.5);
  EXPECT_EQ(s.lens[0].p, 280);
  EXPECT_EQ(s.lens[0].fov, 205);
  EXPECT_EQ(s.lens[0].mount, 90);
  EXPECT_EQ(s.lens[1].cx, 478);
  EXPECT_EQ(s.lens[1].p, 277.25);
  EXPECT_EQ(s.lens[1].fov, 204);
  EXPECT_EQ(s.lens[1].mount, 270);
  EXPECT_EQ(s.lens[1].yaw, -0.6);
  EXPECT_EQ(s.lens[1].pitch, -1.8);
  EXPECT_EQ(s.lens[1].roll, 0.4);
  EXPECT_EQ(s.blend.feather, 32);
  EXPECT_EQ(s.blend.trans_width, 16);
  EXPECT_EQ(s.blend.pyr_level, 4);
  EXPECT_EQ(s.blend.search, false);
  EXPECT_EQ(s.blend.findpath_width, 48);
  EXPECT_EQ(s.blend.inv_scale, 2);
}

TEST(Profile, an_empty_one_leaves_everything_open) {
  const CameraSettings s = read("", "cam.toml");
  EXPECT_FALSE(s.width || s.picture || s.lens[0].cx || s.lens[1].yaw || s.blend.feather || s.blend.search);
}

TEST(Profile, unknown_keys_are_told_with_their_line) {
  EXPECT_EQ(refusal("width = 1920\nwidht = 3\n"), "cam.toml: line 2: unknown key 'widht'");
  EXPECT_EQ(refusal("[lens0]\ncx = 1\n\nfocal = 3\n"), "cam.toml: line 4: unknown key 'lens0.focal'");
  EXPECT_EQ(refusal("\n[lens2]\ncx = 1\n"), "cam.toml: line 2: unknown key 'lens2'");
  EXPECT_EQ(refusal("[blend]\nsearch = true\n"), "cam.toml: line 2: unknown key 'blend.search'");
}

TEST(Profile, only_lens_1_has_a_turn) { EXPECT_EQ(refusal("[lens0]\nyaw = 1\n"), "cam.toml: line 2: unknown key 'lens0.yaw'"); }

TEST(Profile, values_of_the_wrong_kind_are_told_with_their_line) {
  EXPECT_EQ(refusal("[lens0]\ncx = 'left'\n"), "cam.toml: line 2: lens0.cx must be a number, -100000 to 100000");
  EXPECT_EQ(refusal("[blend]\nfeather = 32.5\n"), "cam.toml: line 2: blend.feather must be a whole number, 0 to 4096");
  EXPECT_EQ(refusal("[seam]\nsearch = 1\n"), "cam.toml: line 2: seam.search must be true or false");
  EXPECT_EQ(refusal("lens0 = 3\n"), "cam.toml: line 1: lens0 must be a table");
}

TEST(Profile, values_out_of_range_are_told_with_their_line) {
  for (const char* text :
       {"width = 63", "width = 1000000", "width = 100", "[lens0]\np = 0", "[lens0]\np = nan", "[lens1]\np = -inf",
        "[lens0]\nfov = 90", "[lens0]\nmount = 45", "[lens1]\nyaw = 46", "[lens1]\nroll = -200", "[blend]\nfeather = -2",
        "[blend]\npyr_level = 0", "[seam]\ninv_scale = 0.5", "[picture]\nwidth = 4", "[blend]\nfeather = 99999999999"}) {
    const std::string line = refusal(text);
    EXPECT_EQ(line.rfind("cam.toml: line ", 0), 0u) << line;
  }
}

TEST(Profile, broken_toml_is_told_with_its_line) {
  EXPECT_EQ(refusal("width = 1920\n[lens0\n").rfind("cam.toml: line ", 0), 0u);
  refusal("width = 1\nwidth = 2\n");
  refusal(std::string("\xff\xfe\x00", 3));
}

}  // namespace
}  // namespace biseam::profile
