#include <gtest/gtest.h>

#include "compare/luma.hpp"
#include "compare/metrics.hpp"
#include "picture/read_picture.hpp"
#include "tool/support/command_line.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::run_tool;
using test::ScratchFolder;

TEST(SceneCommand, WritesWhatStitchBringsBackToTheTruth) {
  const ScratchFolder folder;
  ASSERT_EQ(run_tool({"scene", "-o", folder / "s", "--width", "512", "--fisheye-size", "288"}).message, "");
  const test::Outcome stitched =
      run_tool({"stitch", folder / "s/side_by_side.png", "--camera", folder / "s/camera.toml", "-o", folder / "p.png"});
  ASSERT_EQ(stitched.message, "");
  const Luma truth = luma_of(*read_picture(folder / "s/truth.png")), panorama = luma_of(*read_picture(folder / "p.png"));
  ASSERT_EQ(panorama.size, (Size{512, 256}));
  const Quality quality = measure({{512, 256}, truth.codes, panorama.codes}, all_columns(512));
  // Pictures four times as large give 34.0 dB: the rest is how the place is rendered, with 16 samples a pixel at most.  A
  // panorama that lies half a pixel aside gives 26.
  EXPECT_GT(quality.weighted_psnr, 33);
  EXPECT_GT(quality.ssim, 0.955);
}

TEST(SceneCommand, ExposureDifferenceBrightensLens0AndDarkensLens1) {
  const ScratchFolder folder;
  const auto mean = [&](const std::string& file) {
    const Luma luma = luma_of(*read_picture(folder / file));
    double sum = 0;
    for (const float code : luma.codes) sum += double(code);
    return sum / double(luma.codes.size());
  };
  run_tool({"scene", "-o", folder / "a", "--width", "64", "--fisheye-size", "64"});
  run_tool({"scene", "-o", folder / "b", "--width", "64", "--fisheye-size", "64", "--exposure-difference", "0.5"});
  EXPECT_GT(mean("b/fisheye0.png"), mean("a/fisheye0.png") + 3);
  EXPECT_LT(mean("b/fisheye1.png"), mean("a/fisheye1.png") - 3);
  EXPECT_EQ(mean("b/truth.png"), mean("a/truth.png"));
}

TEST(SceneCommand, PlacardsStandWhereBothLensesSeeThem) {
  const ScratchFolder folder;
  ASSERT_EQ(run_tool({"scene", "-o", folder / "a", "--width", "64", "--fisheye-size", "64"}).message, "");
  ASSERT_EQ(run_tool({"scene", "-o", folder / "b", "--width", "64", "--fisheye-size", "64", "--placards", "0.5"}).message, "");
  for (const char* name : {"truth.png", "fisheye0.png", "fisheye1.png"}) {
    const Luma without = luma_of(*read_picture(folder / ("a/" + std::string(name)))),
               with = luma_of(*read_picture(folder / ("b/" + std::string(name))));
    EXPECT_NE(without.codes, with.codes) << name;
  }
}

TEST(SceneCommand, RefusesWhatStitchCouldNotUse) {
  const ScratchFolder folder;
  EXPECT_EQ(run_tool({"scene", "-o", folder / "s", "--width", "500"}).exit_code, 2);
  EXPECT_EQ(run_tool({"scene", "-o", folder / "s", "--fisheye-size", "301"}).exit_code, 2);
  EXPECT_EQ(run_tool({"scene", "-o", folder / "s", "--fov", "170"}).exit_code, 2);
  EXPECT_EQ(run_tool({"scene", "-o", folder / "s", "--placards", "0.2"}).exit_code, 2);
  EXPECT_EQ(run_tool({"scene", "-o", folder / "s", "--placards", "5"}).exit_code, 2);
  for (const std::string option : {"--exposure-difference", "--temperature-difference", "--vignette-difference", "--flare",
                                   "--differ-from", "--exposure-drift", "--shake", "--turn"}) {
    for (const char* value : {"-99999", "9999999999", "some"}) {
      const test::Outcome outcome = run_tool({"scene", "-o", folder / "s", option, value});
      EXPECT_EQ(outcome.exit_code, 2) << option << value;
      EXPECT_NE(outcome.message.find(option), std::string::npos) << outcome.message;
    }
  }
  EXPECT_TRUE(folder.names().empty());
}

}  // namespace
}  // namespace biseam::tool
