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

TEST(Profile, EveryKeyIsRead) {
  const CameraSettings s = read(R"(
width = 1920
baseline = 0.03
[picture]
width = 960
height = 964
[lens0]
cx = 475
cy = 471.5
p = 280
k = [0.01, -2, 3e-3]
fov = 205
mount = 90
yaw = 0.25
pitch = -0.5
roll = 0.75
vignette = [-0.05, 0.01]
gain = [1.1, 1, 0.9]
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
  EXPECT_EQ(s.lens[0].k, (std::array{0.01, -2.0, 0.003}));
  EXPECT_EQ(s.lens[0].fov, 205);
  EXPECT_EQ(s.lens[0].mount, 90);
  EXPECT_EQ(s.lens[0].yaw, 0.25);
  EXPECT_EQ(s.lens[0].pitch, -0.5);
  EXPECT_EQ(s.lens[0].roll, 0.75);
  EXPECT_EQ(s.lens[0].vignette, (std::array{-0.05, 0.01}));
  EXPECT_EQ(s.lens[0].gain, (std::array{1.1, 1.0, 0.9}));
  EXPECT_EQ(s.lens[1].cx, 478);
  EXPECT_EQ(s.lens[1].p, 277.25);
  EXPECT_EQ(s.lens[1].fov, 204);
  EXPECT_EQ(s.lens[1].mount, 270);
  EXPECT_EQ(s.lens[1].yaw, -0.6);
  EXPECT_EQ(s.lens[1].pitch, -1.8);
  EXPECT_EQ(s.lens[1].roll, 0.4);
  EXPECT_EQ(s.baseline, 0.03);
  EXPECT_EQ(s.blend.feather, 32);
  EXPECT_EQ(s.blend.trans_width, 16);
  EXPECT_EQ(s.blend.pyr_level, 4);
  EXPECT_EQ(s.blend.search, false);
  EXPECT_EQ(s.blend.findpath_width, 48);
  EXPECT_EQ(s.blend.inv_scale, 2);
}

TEST(Profile, AnEmptyOneLeavesEverythingOpen) {
  const CameraSettings s = read("", "cam.toml");
  EXPECT_FALSE(s.width || s.picture || s.lens[0].cx || s.lens[1].yaw || s.blend.feather || s.blend.search);
}

TEST(Profile, UnknownKeysAreToldWithTheirLine) {
  EXPECT_EQ(refusal("width = 1920\nwidht = 3\n"), "cam.toml: line 2: unknown key 'widht'");
  EXPECT_EQ(refusal("[lens0]\ncx = 1\n\nfocal = 3\n"), "cam.toml: line 4: unknown key 'lens0.focal'");
  EXPECT_EQ(refusal("\n[lens2]\ncx = 1\n"), "cam.toml: line 2: unknown key 'lens2'");
  EXPECT_EQ(refusal("[blend]\nsearch = true\n"), "cam.toml: line 2: unknown key 'blend.search'");
}

TEST(Profile, ListsHaveAllTheirNumbers) {
  const std::string k = "cam.toml: line 2: lens0.k must be a list of 3 numbers, -10 to 10";
  for (const char* wrong : {"0.1", "[]", "[1, 2]", "[1, 2, 3, 4]", "[1, 2, 11]", "[1, nan, 3]", "[1, 'x', 3]", "[1, [2], 3]"}) {
    EXPECT_EQ(refusal(std::string("[lens0]\nk = ") + wrong), k);
  }
  EXPECT_EQ(refusal("[lens1]\nvignette = [1, 2, 3]"),
            "cam.toml: line 2: lens1.vignette must be a list of 2 numbers, -10 to 10");
  EXPECT_EQ(refusal("[lens1]\ngain = [1, 0, 1]"), "cam.toml: line 2: lens1.gain must be a list of 3 numbers, 0.25 to 4");
  EXPECT_EQ(refusal("baseline = -0.1"), "cam.toml: line 1: baseline must be a number, 0 to 10");
}

TEST(Profile, ValuesOfTheWrongKindAreToldWithTheirLine) {
  EXPECT_EQ(refusal("[lens0]\ncx = 'left'\n"), "cam.toml: line 2: lens0.cx must be a number, -100000 to 100000");
  EXPECT_EQ(refusal("[blend]\nfeather = 32.5\n"), "cam.toml: line 2: blend.feather must be a whole number, 0 to 4096");
  EXPECT_EQ(refusal("[seam]\nsearch = 1\n"), "cam.toml: line 2: seam.search must be true or false");
  EXPECT_EQ(refusal("lens0 = 3\n"), "cam.toml: line 1: lens0 must be a table");
}

TEST(Profile, ValuesOutOfRangeAreToldWithTheirLine) {
  for (const char* text : {"width = 63", "width = 1000000", "width = 100", "[lens0]\np = 0", "[lens0]\np = nan",
                           "[lens1]\np = -inf", "[lens0]\nfov = 90", "[lens0]\nmount = 45", "[lens1]\nyaw = 46",
                           "[lens0]\npitch = -46", "[lens1]\nroll = -200", "[blend]\nfeather = -2", "[blend]\npyr_level = 0",
                           "[seam]\ninv_scale = 0.5", "[picture]\nwidth = 4", "[blend]\nfeather = 99999999999"}) {
    const std::string line = refusal(text);
    EXPECT_EQ(line.rfind("cam.toml: line ", 0), 0u) << line;
  }
}

std::string repeated(const std::string& piece, int times) {
  std::string text;
  for (int k = 0; k < times; ++k) text += piece;
  return text;
}

// Each would use up the stack, inside the parser or when what it made is freed.
TEST(Profile, DeepNestingIsRefusedBeforeItIsParsed) {
  constexpr int kDeep = 100000;
  const std::string dots = "cam.toml: line 2: a key has too many dots, the most is 16";
  const std::string nested = "cam.toml: line 2: values are nested too deeply, the most is 16";
  EXPECT_EQ(refusal("\n" + repeated("a.", kDeep) + "a=1"), dots);
  EXPECT_EQ(refusal("\n" + repeated("'a' . ", kDeep) + "a=1"), dots);
  EXPECT_EQ(refusal("\n[" + repeated("a.", kDeep) + "a]"), dots);
  EXPECT_EQ(refusal("\n[[" + repeated("a.", kDeep) + "a]]"), dots);
  EXPECT_EQ(refusal("\na={" + repeated("a.", kDeep) + "a=1}"), dots);
  EXPECT_EQ(refusal("\na=" + repeated("[", kDeep) + repeated("]", kDeep)), nested);
  EXPECT_EQ(refusal("\na=" + repeated("{a=", kDeep) + "1" + repeated("}", kDeep)), nested);
  EXPECT_EQ(refusal("\na=" + repeated("[{a.a.a=", kDeep) + "1" + repeated("}]", kDeep)), nested);
}

// Whatever hides brackets from a careless look: the ends of strings, comments that are none, lines inside strings.
TEST(Profile, StringsAndCommentsDontHideNesting) {
  for (const char* hiding :
       {R"('#')", R"("#")", R"("\"#")", R"('\')", R"("")", R"('')", R"("""x"""")", R"("""x""""")", "'''x''''",
        "\"\"\"\n#\"\"\"", "'''\n# '''", R"("""""")", R"("""\"""")", R"(""" " "" """)", "'''' '''"}) {
    const std::string line = refusal(std::string("a = [") + hiding + ", " + repeated("[", 1000));
    EXPECT_NE(line.find("nested too deeply"), std::string::npos) << hiding << ": " << line;
  }
}

TEST(Profile, WhatOnlyLooksDeepIsTaken) {
  const std::string many = repeated(".[{", 100);
  EXPECT_EQ(read("# " + many + "\nwidth = 640 # " + many + "\n[lens0]\n'cx' = 1.5\n\"p\" = 100.25\n", "cam.toml").width, 640);
  EXPECT_EQ(refusal("[lens0]\n'" + many + "' = 1\n"), "cam.toml: line 2: unknown key 'lens0." + many + "'");
}

TEST(Profile, ALongOneIsRefusedAndNotCut) {
  const std::string line = "width = 640\n";
  const std::string longest = line + "#" + std::string(kMostBytes - line.size() - 1, 'x');
  EXPECT_EQ(read(longest, "cam.toml").width, 640);
  EXPECT_EQ(refusal(longest + "x"), "cam.toml: is too long for a profile, the most is 1 MiB");
}

TEST(Profile, BrokenTomlIsToldWithItsLine) {
  EXPECT_EQ(refusal("width = 1920\n[lens0\n").rfind("cam.toml: line ", 0), 0u);
  refusal("width = 1\nwidth = 2\n");
  refusal(std::string("\xff\xfe\x00", 3));
}

}  // namespace
}  // namespace biseam::profile
