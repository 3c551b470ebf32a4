#include "stitch/exact_engine.hpp"

#include <gtest/gtest.h>

#include "picture/frame_over.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "setup/exact_config.hpp"
#include "tool/support/painted_pair.hpp"

namespace biseam::tool {
namespace {

using namespace test;

// Its columns and rows look one end of a pixel on, and it rounds more often.
TEST(ExactEngine, GivesTheSphereToo) {
  const Finished finished = stitch(fitting_options({"--engine", "exact"}), fitting_pair());
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  expect_close(finished.out, paint_panorama(kWidth, 1), 1.2, 8);
}

// A host of the library that fills in the same configuration gets the same bytes.
TEST(ExactEngine, GivesTheLibrarysBytes) {
  tool::Setup setup;
  setup.camera = biseam_camera_of(320, 320, 195);
  for (BiseamLens& lens : setup.camera.lens) lens.p = std::stod(std::to_string(fitting_scale()));
  setup.width = kWidth;
  Result<Stitcher> stitcher = Stitcher::create(exact_config(setup, BISEAM_NV12));
  ASSERT_TRUE(stitcher) << stitcher.error().text();
  const Nv12 lens[2] = {paint_fisheye(fitting_view(), 0), paint_fisheye(fitting_view(), 1)};
  Nv12 panorama(kWidth, kWidth / 2);
  ASSERT_FALSE(
      stitcher->process({lens[0].luma, lens[0].chroma}, {lens[1].luma, lens[1].chroma}, {panorama.luma, panorama.chroma}));
  EXPECT_TRUE(stitch(fitting_options({"--engine", "exact"}), fitting_pair()).out == bytes_of(panorama));
}

// As luma and chroma of 8 bits, which change a colour by a step or two on its way.
TEST(ExactEngine, TakesRgb) {
  const ScratchFolder folder;
  const std::string p = std::to_string(fitting_scale());
  const auto options = [&](const std::vector<std::string>& first, const std::string& out) {
    std::vector<std::string> all = first;
    all.insert(all.end(), {"-o", folder / out, "--p0", p, "--p1", p, "--engine", "exact"});
    return all;
  };
  write_picture(folder / "pair.png", side_by_side(paint_fisheye(fitting_view(), 0), paint_fisheye(fitting_view(), 1)));
  const Finished rgb = stitch(options({folder / "pair.png"}, "rgb.png"), "");
  ASSERT_EQ(rgb.exit_code, 0) << rgb.err;
  ASSERT_EQ(stitch(options({"-", "--size", "640x320"}, "raw.png"), fitting_pair()).exit_code, 0);
  const Rgb a = rgb_of(*read_picture(folder / "rgb.png")), b = rgb_of(*read_picture(folder / "raw.png"));
  ASSERT_EQ(a.bytes.size(), b.bytes.size());
  double sum = 0;
  for (std::size_t i = 0; i < a.bytes.size(); ++i) sum += std::abs(a.bytes[i] - b.bytes[i]);
  EXPECT_LT(sum / double(a.bytes.size()), 2);
}

TEST(ExactEngine, WhatDoesNotFitIsOneLine) {
  const auto refused = [](const std::vector<std::string>& more) { return stitch(fitting_options(more), fitting_pair()); };
  expect_refusal(refused({"--engine", "exact", "--width", "1280"}), 5, "--engine exact: pictures are as high as the panorama");
  expect_refusal(refused({"--engine", "exact", "--turn1", "1,0,0"}), 5, "--engine exact: lens 1 is turned");
  expect_refusal(refused({"--engine", "exact", "--mount0", "180"}), 5, "--engine exact: the picture of lens 0 is not upright");
  // Its own words for circles that leave the picture.
  const std::string p = std::to_string(usual_view().p * 1.1);
  expect_refusal(
      stitch({"-", "--size", "640x320", "-o", "-", "--p0", p, "--p1", p, "--engine", "exact", "--feather", "8"}, usual_pair()),
      5, "picture");
}

TEST(ExactEngine, SettingsThatTheLibraryRefusesAreToldInItsWords) {
  const std::string p = std::to_string(fitting_scale());
  const std::vector<std::string> usual = {"-", "--size", "640x320", "-o", "-", "--p0", p, "--p1", p, "--engine", "exact"};
  const auto with = [&](std::vector<std::string> more) {
    more.insert(more.begin(), usual.begin(), usual.end());
    return stitch(more, usual_pair());
  };
  expect_refusal(with({"--feather", "7"}), 5, "feather");
  expect_refusal(with({"--feather", "8", "--findpath-width", "18"}), 5, "findpath_width");
  expect_refusal(with({"--pyr-level", "16"}), 5, "pyr_level");
}

}  // namespace
}  // namespace biseam::tool
