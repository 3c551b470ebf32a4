// Real cameras' pictures with the profiles that come with the project.  The pictures are kept outside it.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "picture/read_picture.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/places.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

constexpr int kWidth = 960;

// Mean jump from column to column around a seam, in code values of blocks 8 rows high, so that texture hardly counts.
double jump(const Nv12& panorama, int column) {
  const std::size_t width = std::size_t(panorama.width);
  double sum = 0;
  int blocks = 0;
  for (std::size_t top = 0; top + 8 <= std::size_t(panorama.height); top += 8, ++blocks) {
    double difference = 0;
    for (std::size_t y = top; y < top + 8; ++y) {
      const std::uint8_t* at = &panorama.luma[y * width + std::size_t(column)];
      difference += at[1] - at[0];
    }
    sum += std::abs(difference) / 8;
  }
  return sum / blocks;
}

void expect_whole_panorama(std::vector<std::string> names, const std::string& profile) {
  std::vector<std::string> arguments = {test::kTool, "stitch"};
  for (const std::string& name : names) {
    const std::string path = std::string(test::kSourceFolder) + "/../shared/samples/" + name;
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "no sample pictures beside the project: " << name;
    arguments.push_back(path);
  }
  const test::ScratchFolder folder;
  const std::vector<std::string> rest = {"--camera", std::string(test::kSourceFolder) + "/profiles/" + profile,
                                         "--width",  std::to_string(kWidth),
                                         "-o",       folder / "out.png"};
  arguments.insert(arguments.end(), rest.begin(), rest.end());
  const test::Finished finished = test::run(arguments);
  ASSERT_EQ(finished.exit_code, 0) << finished.err;
  const Nv12 panorama = test::read_nv12(folder / "out.png");
  ASSERT_EQ(panorama.width, kWidth);
  ASSERT_EQ(panorama.height, kWidth / 2);

  double usual = 0;
  for (int column = 0; column + 1 < kWidth; ++column) usual += jump(panorama, column) / (kWidth - 1);
  for (int column = kWidth / 4 - 60; column < kWidth / 4 + 60; ++column) {
    EXPECT_LT(jump(panorama, column), 3 * usual) << column;
    EXPECT_LT(jump(panorama, column + kWidth / 2), 3 * usual) << column + kWidth / 2;
  }
}

// The first profile of whoever fits a circle and takes 195 degrees for its angle.
TEST(Samples, FittedCirclesAreEnoughToBeginWith) {
  struct Camera {
    std::vector<std::string> names, options;
  };
  const Camera cameras[] = {
      {{"square_side_by_side_1920x960.png"},
       {"--centre0", "475,471", "--centre1", "478,478", "--p0", "295.6", "--p1", "295.6"}},
      {{"square_side_by_side_1920x960.png"}, {"--p0", "300", "--p1", "300"}},
      {{"woods_lens0_2704x2624.jpg", "woods_lens1_2704x2624.jpg"},
       {"--centre0", "1348,1303", "--centre1", "1347,1303", "--p0", "794.5", "--p1", "794.5"}},
      {{"volcano_lens0_3104x3000.jpg", "volcano_lens1_3104x3000.jpg"}, {"--p0", "899.1", "--p1", "899.1"}},
  };
  const test::ScratchFolder folder;
  for (const Camera& camera : cameras) {
    std::vector<std::string> arguments = {test::kTool, "stitch"};
    for (const std::string& name : camera.names) {
      arguments.push_back(std::string(test::kSourceFolder) + "/../shared/samples/" + name);
      if (!std::filesystem::exists(arguments.back())) GTEST_SKIP() << "no sample pictures beside the project: " << name;
    }
    arguments.insert(arguments.end(), camera.options.begin(), camera.options.end());
    arguments.insert(arguments.end(), {"--width", "1920", "-o", folder / "out.jpg"});
    const test::Finished finished = test::run(arguments);
    EXPECT_EQ(finished.exit_code, 0) << camera.names.front() << ": " << finished.err;
  }
}

TEST(Samples, CitySquare) { expect_whole_panorama({"square_side_by_side_1920x960.png"}, "city_square.toml"); }

TEST(Samples, WoodlandPath) {
  expect_whole_panorama({"woods_lens0_2704x2624.jpg", "woods_lens1_2704x2624.jpg"}, "woodland_path.toml");
}

}  // namespace
}  // namespace biseam::tool
