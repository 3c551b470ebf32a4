#include <gtest/gtest.h>

#include <numbers>

#include "picture/write_picture.hpp"
#include "tool/support/painted_pair.hpp"

namespace biseam::tool {
namespace {

using namespace test;

TEST(StitchCommand, SideBySideThroughPipesGivesTheSphereBack) {
  const Finished finished = stitch({"-", "--size", "640x320", "-o", "-"}, usual_pair());
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  expect_painted_sphere(finished.out);
}

// Turning the panorama turns what it shows, not what it is made of.
TEST(StitchCommand, ALookTurnsThePanorama) {
  const auto seen = [](const char* look) {
    const Finished finished = stitch(fitting_options({"--look", look}), fitting_pair());
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    return finished.out;
  };
  const auto turned = [](double yaw, double pitch, double roll) {
    return paint_picture(kWidth, kWidth / 2, [=](double x, double y) {
      const double longitude = (x + 0.5) * 2 * std::numbers::pi / kWidth - std::numbers::pi;
      const double latitude = -std::numbers::pi / 2 + (y + 0.5) * 2 * std::numbers::pi / kWidth;
      const Vector d = {std::sin(longitude) * std::cos(latitude), std::sin(latitude), std::cos(longitude) * std::cos(latitude)};
      const Vector v = rotate(d, yaw, pitch, roll);
      return Vector{-v[0], v[1], -v[2]};  // the middle is lens 1's, paint counts from lens 0
    });
  };
  EXPECT_TRUE(seen("0,0,0") == seen("360,0,0"));
  expect_close(seen("0,0,0"), turned(0, 0, 0), 0.5, 3);
  expect_close(seen("37,0,0"), turned(37, 0, 0), 0.5, 3);
  expect_close(seen("-100,50,20"), turned(-100, 50, 20), 0.5, 3);
  expect_close(seen("0,90,-15.5"), turned(0, 90, -15.5), 0.5, 3);
}

TEST(StitchCommand, QualitiesDiffer) {
  const auto made = [](const char* quality) { return stitch(fitting_options({"--quality", quality}), fitting_pair()).out; };
  const std::string good = made("good");
  EXPECT_TRUE(stitch(fitting_options({}), fitting_pair()).out == good);
  for (const char* other : {"fast", "best"}) {
    EXPECT_FALSE(made(other) == good);
    expect_close(made(other), paint_panorama(kWidth), 0.6, 3);
  }
}

TEST(StitchCommand, WhatWasAssumedIsToldOnStandardError) {
  const Finished finished = stitch({"-", "--size", "640x320", "-o", "-"}, usual_pair());
  EXPECT_NE(finished.err.find("lens 0: "), std::string::npos) << finished.err;
  EXPECT_NE(finished.err.find("195 degrees"), std::string::npos) << finished.err;
}

// Everything at once that a camera can have: another size for each lens, centres, scales, mounts, a turn.
TEST(StitchCommand, AProfileDescribesAnyCamera) {
  const ScratchFolder folder;
  FisheyeView view0{600, 500, 310, 242, 150}, view1{440, 560, 215, 290, 130};
  view0.mount = 90;
  view1.mount = 270;
  view1.yaw = 4;
  view1.pitch = -3;
  view1.roll = 7;
  write_picture(folder / "0.png", paint_fisheye(view0, 0));
  write_picture(folder / "1.png", paint_fisheye(view1, 1));
  write_bytes(folder / "camera.toml", R"(
width = 640
[lens0]
cx = 310
cy = 242
p = 150
mount = 90
[lens1]
cx = 215
cy = 290
p = 130
mount = 270
yaw = 4
pitch = -3
roll = 7
[blend]
feather = 10
trans_width = 10
)");
  const Finished finished = stitch({folder / "0.png", folder / "1.png", "--camera", folder / "camera.toml", "-o", "-"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  expect_painted_sphere(finished.out);
}

TEST(StitchCommand, AProfileTurnsBothLensesAndBendsTheirRadius) {
  const ScratchFolder folder;
  FisheyeView view0{400, 400, 201, 198, 105}, view1{400, 400, 197, 200, 107};
  view0.k1 = 0.02;
  view0.k2 = -0.01;
  view0.k3 = 0.001;
  view0.yaw = 2;
  view0.pitch = -1;
  view0.roll = 3;
  view1.k1 = -0.015;
  view1.pitch = 1.5;
  write_picture(folder / "0.png", paint_fisheye(view0, 0));
  write_picture(folder / "1.png", paint_fisheye(view1, 1));
  write_bytes(folder / "camera.toml", R"(
width = 640
lens0 = {cx = 201, cy = 198, p = 105, k = [0.02, -0.01, 0.001], yaw = 2, pitch = -1, roll = 3}
lens1 = {cx = 197, cy = 200, p = 107, k = [-0.015, 0, 0], pitch = 1.5}
)");
  const Finished finished = stitch({folder / "0.png", folder / "1.png", "--camera", folder / "camera.toml", "-o", "-"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  expect_painted_sphere(finished.out);
}

// Profiles from before these keys mean what they meant.
TEST(StitchCommand, WhatAProfileLeavesOutChangesNothing) {
  const ScratchFolder folder;
  const std::string lens = "p = 93\n", turn = "yaw = 0.5\n";
  write_bytes(folder / "old.toml", "[lens0]\n" + lens + "[lens1]\n" + lens + turn);
  const std::string open = "k = [0, 0, 0]\nvignette = [0, 0]\ngain = [1, 1, 1]\n";
  write_bytes(folder / "new.toml", "baseline = 0.0\n[lens0]\n" + lens + open + "yaw = 0\npitch = 0\nroll = 0\n[lens1]\n" +
                                       lens + open + turn + "pitch = 0\nroll = 0\n");
  const auto made = [&](const char* profile) {
    return stitch({"-", "--size", "640x320", "-o", "-", "--camera", folder / profile}, fitting_pair());
  };
  const Finished old = made("old.toml");
  EXPECT_EQ(old.exit_code, 0) << old.err;
  EXPECT_TRUE(made("new.toml").out == old.out);
}

TEST(StitchCommand, OptionsReplaceTheProfilesValues) {
  const ScratchFolder folder;
  FisheyeView view = usual_view();
  view.mount = 180;
  const std::string pair = bytes_of(side_by_side(paint_fisheye(view, 0), paint_fisheye(view, 1)));
  write_bytes(folder / "camera.toml", "width = 1920\n[lens0]\np = 20\nmount = 90\n[lens1]\ncx = 3\np = 20\n");
  const std::string p = std::to_string(view.p);
  const Finished finished = stitch({"-", "--size", "640x320", "-o", "-", "--camera", folder / "camera.toml", "--width", "640",
                                    "--p0", p, "--p1", p, "--centre1", "159.5,159.5", "--mount0", "180", "--mount1", "180"},
                                   pair);
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  expect_painted_sphere(finished.out);
}

// The recorded picture is the upright one turned clockwise by the mount: at 90 the sky is at the right edge, at 270 at the left
// one.
TEST(StitchCommand, AMountSaysWhereTheSkyWasRecorded) {
  Nv12 sky_right(320, 320), sky_left(320, 320);
  std::fill(sky_right.chroma.begin(), sky_right.chroma.end(), 128);
  std::fill(sky_left.chroma.begin(), sky_left.chroma.end(), 128);
  for (std::size_t k = 0; k < sky_right.luma.size(); ++k) {
    sky_right.luma[k] = k % 320 >= 160 ? 200 : 50;
    sky_left.luma[k] = k % 320 < 160 ? 200 : 50;
  }
  const std::string pair = bytes_of(side_by_side(sky_right, sky_left));
  const auto brightness = [&](const char* mount0, const char* mount1, std::size_t row) {
    const Finished finished = stitch({"-", "--size", "640x320", "-o", "-", "--mount0", mount0, "--mount1", mount1}, pair);
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    const Nv12 panorama = panorama_from(finished.out);
    double sum = 0;
    for (std::size_t x = 0; x < kWidth; ++x) sum += panorama.luma[row * kWidth + x];
    return sum / kWidth;
  };
  EXPECT_NEAR(brightness("90", "270", 80), 200, 1);
  EXPECT_NEAR(brightness("90", "270", 240), 50, 1);
  EXPECT_NEAR(brightness("270", "90", 80), 50, 1);
}

TEST(StitchCommand, ATurnMayBeginWithAMinus) {
  FisheyeView turned = usual_view();
  turned.yaw = -1;
  turned.pitch = 2;
  turned.roll = -3;
  const std::string pair = bytes_of(side_by_side(paint_fisheye(usual_view(), 0), paint_fisheye(turned, 1)));
  const Finished finished = stitch({"-", "--size", "640x320", "-o", "-", "--turn1", "-1,2,-3"}, pair);
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  expect_painted_sphere(finished.out);
}

// The profile holds for the camera's pictures of any size and for panoramas of any width.
TEST(StitchCommand, AProfileIsScaledToPictureAndWidth) {
  const ScratchFolder folder;
  write_bytes(folder / "camera.toml",
              "width = 1280\n[picture]\nwidth = 640\nheight = 640\n[lens0]\ncx = 319.5\ncy = 319.5\np = 188.0520\n"
              "[lens1]\ncx = 319.5\ncy = 319.5\np = 188.0520\n[blend]\nfeather = 20\ntrans_width = 20\n");
  const Finished finished =
      stitch({"-", "--size", "640x320", "-o", "-", "--camera", folder / "camera.toml", "--width", "640"}, usual_pair());
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_EQ(finished.err, "");
  expect_painted_sphere(finished.out);
}

// A circle that the picture cuts off before the plane between the lenses leaves directions that no lens sees.
TEST(StitchCommand, LensesThatDontOverlapAllRoundAreRefused) {
  FisheyeView view{320, 280, 159.5, 139.5, 160 / radians(97.5)};
  const std::string pair = bytes_of(side_by_side(paint_fisheye(view, 0), paint_fisheye(view, 1)));
  const std::string p = std::to_string(view.p);
  const Finished finished = stitch({"-", "--size", "640x280", "-o", "-", "--width", "640", "--p0", p, "--p1", p}, pair);
  expect_refusal(finished, 5, "overlap is -4.69 degrees: each lens must see 1 or more beyond the plane between them");
}

TEST(StitchCommand, SearchingAndCuttingStraightDiffer) {
  FisheyeView near = usual_view();
  near.yaw = 3;  // a mismatch on the seams
  const std::string pair = bytes_of(side_by_side(paint_fisheye(usual_view(), 0), paint_fisheye(near, 1)));
  const std::string searched = stitch({"-", "--size", "640x320", "-o", "-"}, pair).out;
  EXPECT_EQ(stitch({"-", "--size", "640x320", "-o", "-", "--search"}, pair).out, searched);
  const std::string straight = stitch({"-", "--size", "640x320", "-o", "-", "--no-search"}, pair).out;
  EXPECT_EQ(straight.size(), searched.size());
  EXPECT_NE(straight, searched);
}

TEST(StitchCommand, AProfileForAnotherShapeOfPictureIsNamed) {
  const ScratchFolder folder;
  write_bytes(folder / "camera.toml", "[picture]\nwidth = 640\nheight = 480\n");
  expect_refusal(stitch({"-", "--size", "640x320", "-o", "-", "--camera", folder / "camera.toml"}, usual_pair()), 5,
                 "camera.toml");
}

TEST(StitchCommand, AProfileThatIsWrongIsNamedWithLineAndKey) {
  const ScratchFolder folder;
  write_bytes(folder / "camera.toml", "width = 640\n[lens0]\nradius = 3\n");
  const Finished finished = stitch({"-", "--size", "640x320", "-o", "-", "--camera", folder / "camera.toml"}, usual_pair());
  expect_refusal(finished, 5, "camera.toml: line 3: unknown key 'lens0.radius'");
  expect_refusal(stitch({"-", "--size", "640x320", "-o", "-", "--camera", folder / "none.toml"}, usual_pair()), 3, "none.toml");
}

// What would be cut off changes what the profile says.
TEST(StitchCommand, AProfileThatIsTooLongIsRefused) {
  const ScratchFolder folder;
  write_bytes(folder / "camera.toml", "#" + std::string(1 << 20, 'x') + "\n[lens0]\np = 94\n");
  expect_refusal(stitch({"-", "--size", "640x320", "-o", "-", "--camera", folder / "camera.toml"}, usual_pair()), 5,
                 "camera.toml: is too long");
}

// Names come from anywhere: they must not move the cursor, hide text or say things in the tool's name.
TEST(StitchCommand, NamesFromFilesReachTheTerminalEscaped) {
  const ScratchFolder folder;
  const std::string bad = "a\nbiseam: done\x1b[2J\u202e\xff", shown = "a\\nbiseam: done\\x1b[2J\\u{202e}\\xff";
  expect_refusal(stitch({folder / bad + ".png", "-o", folder / "out.png"}), 3, shown + ".png: can't be opened");
  expect_refusal(stitch({folder / "a.png", "-o", folder / bad}), 2, shown + ": the name must end in");
  expect_refusal(stitch({folder / "a.png", "-o", folder / "a.jpg", "--" + bad}), 2, "--" + shown);
  write_bytes(folder / "camera.toml", "[lens0]\n\"\\u001b[2J\\nbiseam: done\" = 1\n");
  expect_refusal(stitch({"-", "--size", "640x320", "-o", "-", "--camera", folder / "camera.toml"}, usual_pair()), 5,
                 "camera.toml: line 2: unknown key 'lens0.\\x1b[2J\\nbiseam: done'");
}

TEST(StitchCommand, AWrongCommandLineIsOneLine) {
  const ScratchFolder folder;
  const std::string out = folder / "out.png";
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{}, "IN"},
      {{"a.png"}, "--output"},
      {{"a.png", "-o", out, "--nonsense"}, "--nonsense"},
      {{"a.png", "b.png", "c.png", "-o", out}, "IN"},
      {{"a.png", "-o", folder / "out.bmp"}, "out.bmp"},
      {{"a.png", "-o", out, "--show-seams", "seams"}, "seams"},
      {{"a.png", "-o", out, "--show-seams", "-"}, "--show-seams"},
      {{"a.png", "-o", out, "--width", "100"}, "--width"},
      {{"a.png", "-o", out, "--width", "-8"}, "--width"},
      {{"a.png", "-o", out, "--width", "many"}, "--width"},
      {{"a.png", "-o", out, "--size", "640"}, "640"},
      {{"a.png", "-o", out, "--p0", "0"}, "--p0"},
      {{"a.png", "-o", out, "--p1", "nan"}, "--p1"},
      {{"a.png", "-o", out, "--fov", "20"}, "--fov"},
      {{"a.png", "-o", out, "--mount1", "45"}, "--mount1"},
      {{"a.png", "-o", out, "--centre0", "3"}, "--centre0"},
      {{"a.png", "-o", out, "--centre0", "3,4,5"}, "--centre0"},
      {{"a.png", "-o", out, "--turn1", "1,2,x"}, "--turn1"},
      {{"a.png", "-o", out, "--turn1", "1,2,90"}, "--turn1"},
      {{"a.png", "-o", out, "--feather", "-4"}, "--feather"},
      {{"a.png", "-o", out, "--layout", "round"}, "--layout"},
      {{"a.png", "-o", out, "--engine", "steam"}, "--engine"},
      {{"a.png", "-o", out, "--quality", "bad"}, "--quality: 'bad' must be fast, good or best"},
      {{"a.png", "-o", out, "--look", "1,2"}, "--look"},
      {{"a.mp4", "-o", folder / "out.mp4", "--bitrate", "0"}, "--bitrate: '0' must be above 0, as 20M is"},
      {{"a.png", "-o", out, "--feather", "8"}, "--feather: only for --engine exact"},
      {{"a.png", "-o", out, "--pyr-level", "3"}, "--pyr-level: only for --engine exact"},
      {{"a.png", "-o", out, "--engine", "exact", "--quality", "best"}, "--quality: not for --engine exact"},
      {{"a.png", "-o", out, "--engine", "exact", "--look", "1,2,3"}, "--look: not for --engine exact"},
      {{"a.mp4", "-o", folder / "out.mp4", "--engine", "exact", "--jobs", "2"}, "--jobs: not for --engine exact"},
      {{"a.png", "-o", out, "--inv-scale", "0"}, "--inv-scale"},
      {{"a.nv12", "-o", out}, "a.nv12"},
      {{"-", "-", "-o", out}, "standard input"},
  };
  write_bytes(folder / "a.nv12", "xx");
  for (auto [arguments, name] : wrong) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    if (!arguments.empty() && arguments[0] == "a.nv12") arguments[0] = folder / "a.nv12";
    expect_refusal(stitch(arguments), 2, name);
  }
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.nv12"}));
}

TEST(StitchCommand, HelpGoesToStandardOutput) {
  const Finished finished = stitch({"--help"});
  EXPECT_EQ(finished.exit_code, 0);
  EXPECT_NE(finished.out.find("--show-seams"), std::string::npos);
  EXPECT_EQ(finished.err, "");
}

}  // namespace
}  // namespace biseam::tool
