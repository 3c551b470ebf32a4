// Cameras found by the tool: `biseam calibrate`, and `biseam stitch` without a profile.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "picture/write_picture.hpp"
#include "profile/read.hpp"
#include "tool/calibrate/world.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/process.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::Finished;
using test::read_bytes;
using test::ScratchFolder;
using test::write_bytes;

constexpr int kSide = 480;
constexpr int kFrames = 6;

Nv12 gray(int width, int height) {
  Nv12 picture(width, height);
  std::fill(picture.chroma.begin(), picture.chroma.end(), 128);
  return picture;
}

Nv12 lens_picture(const cv::Mat1b& luma) {
  Nv12 picture = gray(luma.cols, luma.rows);
  std::copy(luma.begin(), luma.end(), picture.luma.begin());
  return picture;
}

Nv12 both_circles(const calibrate::Pair& pair) {
  cv::Mat both;
  cv::hconcat(pair.lens[0], pair.lens[1], both);
  return lens_picture(both);
}

const calibrate::Pair& photographed() {
  static const calibrate::Pair pair = calibrate::photograph(calibrate::some_camera(kSide));
  return pair;
}

// Lens 1 shows nothing.
calibrate::Pair covered() {
  calibrate::Pair pair = photographed();
  pair.lens[1] = cv::Mat1b(kSide, kSide, static_cast<unsigned char>(2));
  return pair;
}

Finished run_tool(const std::string& command, std::vector<std::string> arguments, const std::string& input = "") {
  arguments.insert(arguments.begin(), {BISEAM_TOOL, command});
  return test::run(std::move(arguments), input);
}

Camera camera_in(const std::string& path) {
  const profile::CameraSettings settings = profile::read(read_bytes(path), path);
  Camera camera;
  for (int k = 0; k < 2; ++k) {
    const profile::LensSettings& lens = settings.lens[k];
    Lens& to = camera.lens[k];
    to.width = settings.picture->width;
    to.height = settings.picture->height;
    to.cx = *lens.cx;
    to.cy = *lens.cy;
    to.p = *lens.p;
    std::copy(lens.k->begin(), lens.k->end(), to.k);
    to.fov = *lens.fov;
    to.mount = *lens.mount;
    to.turn = {lens.yaw.value_or(0), lens.pitch.value_or(0), lens.roll.value_or(0)};
  }
  return camera;
}

void expect_refused(const Finished& finished, int exit_code, const std::string& output) {
  EXPECT_EQ(finished.exit_code, exit_code) << finished.err;
  EXPECT_EQ(finished.out, "");
  EXPECT_EQ(std::count(finished.err.begin(), finished.err.end(), '\n'), 1) << finished.err;
  EXPECT_FALSE(std::filesystem::exists(output));
}

bool tells(const Finished& finished, const std::string& what) { return finished.err.find(what) != std::string::npos; }

TEST(CalibrateCommand, ProfileOfAPicture) {
  const ScratchFolder folder;
  write_picture(folder / "pair.png", both_circles(photographed()));
  const Finished finished = run_tool("calibrate", {folder / "pair.png", "-o", folder / "found.toml"});
  ASSERT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_LT(calibrate::seam_error(calibrate::some_camera(kSide), camera_in(folder / "found.toml")), 1.5);
  for (const char* told : {"lens 0: centre ", "lens 1: yaw ", " matches, ", "each eighth of the ring:"}) {
    EXPECT_NE(finished.out.find(told), std::string::npos) << told;
  }
}

TEST(CalibrateCommand, OneFileForEachLensTellsTheSame) {
  const ScratchFolder folder;
  write_picture(folder / "pair.png", both_circles(photographed()));
  for (int k = 0; k < 2; ++k) write_picture(folder / std::to_string(k) + ".png", lens_picture(photographed().lens[k]));
  const Finished one = run_tool("calibrate", {folder / "pair.png", "-o", "-"});
  const Finished two = run_tool("calibrate", {folder / "0.png", folder / "1.png", "-o", "-"});
  ASSERT_EQ(one.exit_code, 0) << one.err;
  EXPECT_EQ(one.out, two.out);
  expect_refused(run_tool("calibrate", {folder / "0.png", "-o", folder / "found.toml"}), 2, folder / "found.toml");
}

TEST(CalibrateCommand, HeldValuesStay) {
  const ScratchFolder folder;
  write_picture(folder / "pair.png", both_circles(photographed()));
  ASSERT_EQ(run_tool("calibrate", {folder / "pair.png", "-o", folder / "first.toml"}).exit_code, 0);
  const Finished again = run_tool(
      "calibrate", {folder / "pair.png", "--start", folder / "first.toml", "--fix", "p,k", "-o", folder / "again.toml"});
  ASSERT_EQ(again.exit_code, 0) << again.err;
  const Camera first = camera_in(folder / "first.toml"), second = camera_in(folder / "again.toml");
  for (int k = 0; k < 2; ++k) {
    EXPECT_NEAR(second.lens[k].p, first.lens[k].p, 1e-3);
    EXPECT_NEAR(second.lens[k].k[0], first.lens[k].k[0], 1e-6);
    EXPECT_NEAR(second.lens[k].k[1], first.lens[k].k[1], 1e-6);
  }
  const std::vector<std::string> rest = {"-o", folder / "no.toml", folder / "pair.png"};
  for (std::vector<std::string> wrong :
       {std::vector<std::string>{"--fix", "p"}, {"--start", folder / "first.toml", "--fix", "x"}}) {
    wrong.insert(wrong.end(), rest.begin(), rest.end());
    expect_refused(run_tool("calibrate", wrong), 2, folder / "no.toml");
  }
}

TEST(CalibrateCommand, WhatDoesNotTellIsRefusedInOneLine) {
  const ScratchFolder folder;
  write_picture(folder / "covered.png", both_circles(covered()));
  write_picture(folder / "pair.png", both_circles(photographed()));
  write_bytes(folder / "empty.png", "");
  write_bytes(folder / "cut.mp4", std::string("\0\0\0\x18", 4) + "ftypmp42");
  for (const char* name : {"covered.png", "empty.png", "cut.mp4", "missing.png"}) {
    SCOPED_TRACE(name);
    const Finished finished = run_tool("calibrate", {folder / name, "-o", folder / "found.toml"});
    expect_refused(finished, 3, folder / "found.toml");
    EXPECT_TRUE(tells(finished, name)) << finished.err;
  }
}

TEST(StitchWithoutAProfile, FindsTheCameraAndKeepsIt) {
  const ScratchFolder folder;
  write_picture(folder / "pair.png", both_circles(photographed()));
  const Finished found =
      run_tool("stitch", {folder / "pair.png", "-o", folder / "a.png", "--save-camera", folder / "found.toml"});
  ASSERT_EQ(found.exit_code, 0) << found.err;
  EXPECT_TRUE(tells(found, "camera found in one pair of pictures")) << found.err;
  const Finished known = run_tool("stitch", {folder / "pair.png", "-o", folder / "b.png", "--camera", folder / "found.toml"});
  EXPECT_EQ(known.err, "");
  EXPECT_EQ(read_bytes(folder / "a.png"), read_bytes(folder / "b.png"));
}

TEST(StitchWithoutAProfile, CirclesAloneWhereThePicturesDoNotTell) {
  const ScratchFolder folder;
  write_picture(folder / "covered.png", both_circles(covered()));
  const Finished finished = run_tool("stitch", {folder / "covered.png", "-o", folder / "a.png"});
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_TRUE(tells(finished, "lenses of 195 degrees are assumed")) << finished.err;
  expect_refused(run_tool("stitch", {folder / "covered.png", "-o", folder / "b.png", "--save-camera", folder / "no.toml"}), 3,
                 folder / "no.toml");
  EXPECT_FALSE(std::filesystem::exists(folder / "b.png"));
}

TEST(StitchWithoutAProfile, NoneAndTheCamerasOptionsForbidTheSearch) {
  const ScratchFolder folder;
  write_picture(folder / "pair.png", both_circles(photographed()));
  for (const std::vector<std::string>& forbidding : {std::vector<std::string>{"--camera", "none"}, {"--fov", "200"}}) {
    std::vector<std::string> arguments = {folder / "pair.png", "-o", folder / "a.png"};
    arguments.insert(arguments.end(), forbidding.begin(), forbidding.end());
    const Finished finished = run_tool("stitch", arguments);
    EXPECT_EQ(finished.exit_code, 0) << finished.err;
    EXPECT_FALSE(tells(finished, "camera")) << finished.err;
    arguments.insert(arguments.end(), {"--save-camera", folder / "no.toml"});
    expect_refused(run_tool("stitch", arguments), 2, folder / "no.toml");
  }
}

// A clip of the same place, in which every frame has other noise; key frames are rare.
void write_clip(const std::string& path) {
  test::ClipSpec spec;
  spec.options["g"] = "4";
  std::vector<Nv12> pictures;
  for (int i = 0; i < kFrames; ++i) {
    Nv12 picture = both_circles(photographed());
    for (std::size_t at = std::size_t(i); at < picture.luma.size(); at += 17)
      picture.luma[at] = std::uint8_t(picture.luma[at] ^ 1);
    pictures.push_back(std::move(picture));
  }
  test::write_clip(path, spec, pictures);
}

std::string panoramas(const Finished& finished) {
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  return finished.out;
}

TEST(StitchWithoutAProfile, PartsOfAClipEqualTheWholeForAnyThreads) {
  const ScratchFolder folder;
  const std::string clip = folder / "in.mkv";
  write_clip(clip);
  const Finished run = run_tool("stitch", {clip, "-o", "-", "--width", "640"});
  EXPECT_TRUE(tells(run, "camera found in 6 pairs of pictures")) << run.err;
  const std::string whole = panoramas(run);
  EXPECT_EQ(panoramas(run_tool("stitch", {clip, "-o", "-", "--width", "640", "--jobs", "1"})), whole);
  const std::string first = panoramas(run_tool("stitch", {clip, "-o", "-", "--width", "640", "--to", "0.12"}));
  const std::string rest = panoramas(run_tool("stitch", {clip, "-o", "-", "--width", "640", "--from", "0.12"}));
  EXPECT_EQ(first + rest, whole);
}

TEST(StitchWithoutAProfile, FirstPairOfAPipe) {
  const ScratchFolder folder;
  write_clip(folder / "in.mkv");
  const Finished finished =
      run_tool("stitch", {"-", "-o", "-", "--width", "640", "--frames", "1"}, read_bytes(folder / "in.mkv"));
  EXPECT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_TRUE(tells(finished, "camera found in one pair of pictures")) << finished.err;
}

}  // namespace
}  // namespace biseam::tool
