#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "compare/metrics.hpp"
#include "picture/read_picture.hpp"
#include "profile/read.hpp"
#include "scene/profile.hpp"
#include "scene/render.hpp"
#include "support/random_source.hpp"
#include "text/lettering.hpp"
#include "tool/support/command_line.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::scene {
namespace {

using std::numbers::pi;
using test::run_tool;
using test::ScratchFolder;

constexpr double kWide = 195 * pi / 180;

const Place& place() {
  static const Place only;
  return only;
}

const std::vector<std::uint8_t>& small_panorama() {
  static const std::vector<std::uint8_t> codes = develop(render(place(), view_of(PanoramaView{256, 128})), {});
  return codes;
}

constexpr int kSmallFisheye = 160;

std::vector<std::uint8_t> small_fisheye(int index, double baseline) {
  return develop(render(place(), view_of(Fisheye::fitting(index, kSmallFisheye, kWide), baseline)), {});
}

// Mean difference of the green codes of a fisheye and of the panorama in the same directions; mirrored: of the picture
// turned left to right.
double difference_to_panorama(int index, bool mirrored) {
  const Fisheye lens = Fisheye::fitting(index, kSmallFisheye, kWide);
  const PanoramaView view{256, 128};
  const std::vector<std::uint8_t> picture = small_fisheye(index, 0);
  double sum = 0, count = 0;
  for (int v = 0; v < kSmallFisheye; ++v) {
    for (int u = 0; u < kSmallFisheye; ++u) {
      if (!lens.sees({double(u), double(v)})) continue;
      const Position at = view.project(lens.direction({double(u), double(v)}));
      const int x = int(std::lround(at.u + 256)) % 256, y = std::clamp(int(std::lround(at.v)), 0, 127);
      const int column = mirrored ? kSmallFisheye - 1 - u : u;
      sum += std::abs(picture[std::size_t(v * kSmallFisheye + column) * 3 + 1] -
                      small_panorama()[std::size_t(y * 256 + x) * 3 + 1]);
      ++count;
    }
  }
  return sum / count;
}

TEST(Scene, BothFisheyesShowWhatThePanoramaShowsInTheSameDirection) {
  for (const int index : {0, 1}) {
    EXPECT_LT(difference_to_panorama(index, false), 10);
    EXPECT_GT(difference_to_panorama(index, true), 20) << "the check would not notice a mirrored picture";
  }
}

TEST(Scene, SunStandsWhereItShouldInThePanorama) {
  std::size_t brightest = 0;
  const std::vector<std::uint8_t>& codes = small_panorama();
  const auto sum = [&](std::size_t i) { return codes[3 * i] + codes[3 * i + 1] + codes[3 * i + 2]; };
  for (std::size_t i = 0; i < codes.size() / 3; ++i) {
    if (sum(i) > sum(brightest)) brightest = i;
  }
  EXPECT_NEAR(double(brightest % 256), 52.0 / 360 * 256 - 1, 1.5);
  EXPECT_NEAR(double(brightest / 256), (90.0 - 33) / 180 * 128 - 1, 1.5);
}

TEST(Scene, IsTheSameEveryTime) { EXPECT_EQ(develop(render(place(), view_of(PanoramaView{256, 128})), {}), small_panorama()); }

TEST(Scene, IsBlackOutsideTheImageCircle) {
  const std::vector<std::uint8_t> picture = small_fisheye(1, 0);
  EXPECT_EQ(picture[0] + picture[1] + picture[2], 0);
}

TEST(Scene, BaselineMovesNearThingsAndLeavesTheSky) {
  const std::vector<std::uint8_t> without = small_fisheye(0, 0), with = small_fisheye(0, 0.2);
  const auto changed = [&](int v) {
    int count = 0;
    for (int u = 0; u < kSmallFisheye; ++u)
      count += without[std::size_t(v * kSmallFisheye + u) * 3] != with[std::size_t(v * kSmallFisheye + u) * 3];
    return count;
  };
  EXPECT_EQ(changed(20), 0);
  EXPECT_GT(changed(kSmallFisheye * 3 / 4), kSmallFisheye / 4);
}

TEST(Scene, IsMeasuredInMetres) {
  EXPECT_NEAR(place().distance_along({{0, -1.06, 0.9}, {1, 0, 0}}), 5.13, 1e-9) << "to the coping over the wall";
  EXPECT_EQ(place().distance_along({{0, 0, 0}, {0, -1, 0}}), 1e30);
  EXPECT_NEAR(place().distance_along({{0, 0, 0}, {0, 1, 0}}), 1.5, 1e-9);
}

TEST(ShapeTree, MeetsWhatTryingEveryShapeMeets) {
  const Courtyard yard = build_courtyard();
  const ShapeTree tree(yard.shapes);
  test::RandomSource random;
  const auto any = [&] { return double(random.real_between(-1, 1)); };
  for (int n = 0; n < 3000; ++n) {
    const Vec3 direction = normalised({any(), any(), any() + 1e-3});
    const Beam beam(Ray{{any(), 0.5 * any(), any()}, direction});
    Hit expected, hit;
    for (const Shape& shape : yard.shapes) meet(shape, beam, 1e-4, expected);
    tree.meet(beam, hit);
    ASSERT_EQ(hit.distance, expected.distance);
    ASSERT_EQ(tree.blocks(beam), expected.shape != nullptr);
  }
}

TEST(Develop, OneStopIsTwiceTheLight) {
  const Frame once{2, 1, {{0.1, 0.2, 0.05}, {0.3, 0.4, 0.01}}}, twice{2, 1, {{0.2, 0.4, 0.1}, {0.6, 0.8, 0.02}}};
  EXPECT_EQ(develop(once, {1, 0, 0}), develop(twice, {}));
  EXPECT_NE(develop(once, {}), develop(twice, {}));
}

TEST(Develop, KnowsBlackMiddleGreyAndWhite) {
  const std::vector<std::uint8_t> codes = develop({3, 1, {{0, 0, 0}, {0.2158605, 0.2158605, 0.2158605}, {100, 100, 100}}}, {});
  EXPECT_EQ(codes[0], 0);
  EXPECT_EQ(codes[3], 128) << "sRGB: (0.055 + 128 / 255) / 1.055 to the power of 2.4";
  EXPECT_EQ(codes[6], 255);
}

TEST(Develop, NoiseDependsOnItsSeedAlone) {
  const Frame grey{64, 64, std::vector<Vec3>(64 * 64, {0.2, 0.2, 0.2})};
  EXPECT_EQ(develop(grey, {0, 5, 7}), develop(grey, {0, 5, 7}));
  EXPECT_NE(develop(grey, {0, 5, 7}), develop(grey, {0, 5, 8}));
}

TEST(Develop, NoiseHasTheStandardDeviationAskedFor) {
  const Frame grey{200, 200, std::vector<Vec3>(200 * 200, {0.2, 0.2, 0.2})};
  const int quiet = develop(grey, {})[0];
  double sum = 0, squares = 0;
  const std::vector<std::uint8_t> noisy = develop(grey, {0, 4, 3});
  for (const std::uint8_t code : noisy) sum += code - quiet, squares += (code - quiet) * (code - quiet);
  const double n = double(noisy.size());
  EXPECT_NEAR(sum / n, 0, 0.5) << "the quiet code is rounded";
  EXPECT_NEAR(std::sqrt(squares / n - sum / n * sum / n), std::sqrt(16 + 1.0 / 12), 0.05);
}

TEST(SceneProfile, SaysWhatTheCameraIs) {
  Fisheye lens0 = Fisheye::fitting(0, 1080, kWide), lens1 = Fisheye::fitting(1, 1080, kWide);
  lens1.centre = {541.25, 538.5};
  const profile::CameraSettings settings = profile::read(profile_text(lens0, lens1, 1920), "profile");
  EXPECT_EQ(settings.width, 1920);
  EXPECT_EQ(settings.picture, (profile::Size{1080, 1080}));
  EXPECT_EQ(settings.lens[0].cx, 539.5);
  EXPECT_EQ(settings.lens[1].cx, 541.25);
  EXPECT_EQ(settings.lens[1].cy, 538.5);
  EXPECT_NEAR(*settings.lens[0].p, lens0.pixels_per_radian, 1e-6);
  EXPECT_EQ(settings.lens[1].fov, 195);
}

TEST(SceneCommand, WritesWhatStitchBringsBackToTheTruth) {
  const ScratchFolder folder;
  ASSERT_EQ(run_tool({"scene", "-o", folder / "s", "--width", "512", "--fisheye-size", "288"}).message, "");
  const test::Outcome stitched =
      run_tool({"stitch", folder / "s/side_by_side.png", "--camera", folder / "s/camera.toml", "-o", folder / "p.png"});
  ASSERT_EQ(stitched.message, "");
  const tool::Nv12 truth = tool::read_picture(folder / "s/truth.png"), panorama = tool::read_picture(folder / "p.png");
  ASSERT_EQ(panorama.width, 512);
  ASSERT_EQ(panorama.height, 256);
  const tool::Quality quality = tool::measure({{512, 256}, truth.luma, panorama.luma}, tool::all_columns(512));
  EXPECT_GT(quality.weighted_psnr, 22);
  EXPECT_GT(quality.ssim, 0.8);
}

TEST(SceneCommand, ExposureDifferenceBrightensLens0AndDarkensLens1) {
  const ScratchFolder folder;
  const auto mean = [&](const std::string& file) {
    const tool::Nv12 picture = tool::read_picture(folder / file);
    double sum = 0;
    for (const std::uint8_t code : picture.luma) sum += code;
    return sum / double(picture.luma.size());
  };
  run_tool({"scene", "-o", folder / "a", "--width", "64", "--fisheye-size", "64"});
  run_tool({"scene", "-o", folder / "b", "--width", "64", "--fisheye-size", "64", "--exposure-difference", "0.5"});
  EXPECT_GT(mean("b/fisheye0.png"), mean("a/fisheye0.png") + 3);
  EXPECT_LT(mean("b/fisheye1.png"), mean("a/fisheye1.png") - 3);
  EXPECT_EQ(mean("b/truth.png"), mean("a/truth.png"));
}

TEST(SceneCommand, RefusesWhatStitchCouldNotUse) {
  const ScratchFolder folder;
  EXPECT_EQ(run_tool({"scene", "-o", folder / "s", "--width", "500"}).exit_code, 2);
  EXPECT_EQ(run_tool({"scene", "-o", folder / "s", "--fisheye-size", "301"}).exit_code, 2);
  EXPECT_EQ(run_tool({"scene", "-o", folder / "s", "--fov", "170"}).exit_code, 2);
  EXPECT_TRUE(folder.names().empty());
}

TEST(Lettering, InksItsStrokesAndNothingElse) {
  const tool::Lettering bar("I", 0.2);
  EXPECT_EQ(bar.ink(0, 0.5, 0.01), 1);
  EXPECT_EQ(bar.ink(0.05, 0.5, 0.01), 1);
  EXPECT_NEAR(bar.ink(0.1, 0.5, 0.02), 0.5, 1e-9);
  EXPECT_EQ(bar.ink(0.15, 0.5, 0.01), 0);
  EXPECT_EQ(bar.ink(0, 1.2, 0.01), 0);
}

TEST(Lettering, SetsSmallLettersAsCapitalsAndUnknownOnesAsBlanks) {
  EXPECT_EQ(tool::Lettering("seam").width(), tool::Lettering("SEAM").width());
  EXPECT_EQ(tool::Lettering("A~B").width(), tool::Lettering("A B").width());
  EXPECT_EQ(tool::Lettering("").width(), 0);
  EXPECT_EQ(tool::Lettering("").ink(0, 0.5, 0.1), 0);
}

TEST(Lettering, HasEveryCapitalAndDigit) {
  for (const char letter : std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-+.,:/()=")) {
    const tool::Lettering glyph(std::string(1, letter));
    int inked = 0;
    for (double y = 0; y <= 1.25; y += 0.05) {
      for (double x = 0; x <= 1; x += 0.05) inked += glyph.ink(x, y, 0.05) > 0.5;
    }
    EXPECT_GT(inked, letter == '.' ? 1 : 3) << letter;
  }
}

}  // namespace
}  // namespace biseam::scene
