#include "calibration/calibrate_camera.hpp"

#include "picture/write_picture.hpp"
#include "profile/read.hpp"
#include "tool/calibrate/turned.hpp"
#include "tool/calibration/photographed.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::Finished;
using test::read_bytes;
using test::ScratchFolder;
using test::write_bytes;

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

// The profile of one picture, in a folder that is kept as long as the program runs.
struct Calibrated {
  ScratchFolder folder;
  std::string pair = folder / "pair.png", profile = folder / "found.toml";
  Finished finished;
  Calibrated() {
    write_picture(pair, both_circles(photographed()));
    finished = run_tool("calibrate", {pair, "-o", profile});
  }
};

const Calibrated& calibrated() {
  static const Calibrated once;
  return once;
}

TEST(CalibrateCommand, ProfileOfAPicture) {
  const Finished& finished = calibrated().finished;
  ASSERT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_LT(calibrate::seam_error(calibrate::some_camera(kSide), camera_in(calibrated().profile)), 1.5);
  for (const char* told : {"lens 0: centre ", "lens 1: yaw ", " matches, ", "each eighth of the ring:"}) {
    EXPECT_NE(finished.out.find(told), std::string::npos) << told;
  }
}

TEST(CalibrateCommand, ReportOfWhatIsInTheProfile) {
  const ScratchFolder folder;
  write_picture(folder / "pair.png", both_circles(photographed()));
  const Finished finished =
      run_tool("calibrate", {folder / "pair.png", "-o", folder / "found.toml", "--report", folder / "report.html"});
  ASSERT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(read_bytes(folder / "report.html").find("<pre>" + read_bytes(folder / "found.toml") + "</pre>"), std::string::npos);
}

TEST(CalibrateCommand, RefusedCalibrationLeavesNeitherProfileNorReport) {
  const ScratchFolder folder;
  write_picture(folder / "covered.png", both_circles(covered()));
  expect_refused(
      run_tool("calibrate", {folder / "covered.png", "-o", folder / "found.toml", "--report", folder / "report.html"}), 3,
      folder / "report.html");
  EXPECT_FALSE(std::filesystem::exists(folder / "found.toml"));
  write_picture(folder / "pair.png", both_circles(photographed()));
  expect_refused(
      run_tool("calibrate", {folder / "pair.png", "-o", folder / "found.toml", "--report", folder / "no/report.html"}), 4,
      folder / "found.toml");
}

TEST(CalibrateCommand, InLensNeedsACameraThatTurns) {
  const ScratchFolder folder;
  write_picture(folder / "pair.png", both_circles(photographed()));
  const Finished finished = run_tool("calibrate", {folder / "pair.png", "--in-lens", "-o", folder / "found.toml"});
  expect_refused(finished, 3, folder / "found.toml");
  EXPECT_TRUE(tells(finished, "the camera doesn't turn")) << finished.err;
}

TEST(CalibrateCommand, ACameraThatTurnsIsSeenWithinItsLenses) {
  const ScratchFolder folder;
  const Camera camera = calibrate::some_camera(calibrate::kTurningSide);
  std::vector<std::string> arguments = {"--in-lens", "-o", folder / "found.toml", "--report", folder / "report.html"};
  for (const calibrate::Pair& pair : calibrate::film_turning(camera)) {
    arguments.push_back(folder / std::to_string(arguments.size()) + ".png");
    write_picture(arguments.back(), both_circles(pair));
  }
  const Finished finished = run_tool("calibrate", arguments);
  ASSERT_EQ(finished.exit_code, 0) << finished.err;
  EXPECT_NE(finished.out.find(" tracks within the lenses, as the camera turns"), std::string::npos) << finished.out;
  EXPECT_NE(read_bytes(folder / "report.html").find("Tracks within the lenses"), std::string::npos);
  const Camera found = camera_in(folder / "found.toml");
  for (int k = 0; k < 2; ++k) EXPECT_NEAR(found.lens[k].p, camera.lens[k].p, 0.01 * camera.lens[k].p);
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
  ASSERT_EQ(calibrated().finished.exit_code, 0);
  const Finished again =
      run_tool("calibrate", {calibrated().pair, "--start", calibrated().profile, "--fix", "p,k", "-o", folder / "again.toml"});
  ASSERT_EQ(again.exit_code, 0) << again.err;
  const Camera first = camera_in(calibrated().profile), second = camera_in(folder / "again.toml");
  for (int k = 0; k < 2; ++k) {
    EXPECT_NEAR(second.lens[k].p, first.lens[k].p, 1e-3);
    EXPECT_NEAR(second.lens[k].k[0], first.lens[k].k[0], 1e-6);
    EXPECT_NEAR(second.lens[k].k[1], first.lens[k].k[1], 1e-6);
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

}  // namespace
}  // namespace biseam::tool
