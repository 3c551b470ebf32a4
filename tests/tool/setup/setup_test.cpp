#include "setup/setup.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

std::pair<ExitCode, std::string> refusal(const std::string& profile) {
  return test::failure_of([&] { make_setup(tool::read_camera(profile), {}, {{96, 96}, {96, 96}}); });
}

std::string written(const test::ScratchFolder& folder, const std::string& text) {
  std::ofstream(folder / "cam.toml") << text;
  return folder / "cam.toml";
}

TEST(Setup, AMissingProfileIsAnInputFailure) {
  const test::ScratchFolder folder;
  EXPECT_EQ(refusal(folder / "none.toml").first, ExitCode::input);
  EXPECT_EQ(refusal(folder / ".").first, ExitCode::input);
}

TEST(Setup, WhatIsWrongWithAProfileIsAFailureOfSettings) {
  const test::ScratchFolder folder;
  const std::string name = folder / "cam.toml";
  const std::pair<ExitCode, std::string> unknown{ExitCode::settings, name + ": line 1: unknown key 'widht'"};
  EXPECT_EQ(refusal(written(folder, "widht = 3")), unknown);
  const std::pair<ExitCode, std::string> shape{ExitCode::settings, name + ": is for pictures of 96x48, this one is 96x96"};
  EXPECT_EQ(refusal(written(folder, "picture = {width = 96, height = 48}")), shape);
}

TEST(Setup, AProfileIsScaledToPictureAndWidth) {
  const test::ScratchFolder folder;
  const std::string name = written(folder, R"(width = 1280
baseline = 0.04
picture = {width = 640, height = 640}
lens0 = {cx = 319.5, p = 188, k = [0.01, 0.02, 0.03]}
lens1 = {cx = 320.5, p = 190, pitch = 1.5}
blend = {feather = 20}
)");
  profile::CameraSettings given;
  given.width = 640;
  const tool::Setup setup = make_setup(tool::read_camera(name), given, {{320, 320}, {960, 960}});
  EXPECT_EQ(setup.width, 640);
  EXPECT_EQ(setup.profile, name);
  EXPECT_EQ(setup.blend.feather, 10);
  EXPECT_EQ(setup.camera.size, sizeof(BiseamCamera));
  EXPECT_EQ(setup.camera.baseline, 0.04);
  EXPECT_EQ(setup.camera.lens[0].p, 94);
  EXPECT_EQ(setup.camera.lens[0].cx, 159.5);
  EXPECT_EQ(setup.camera.lens[0].k[2], 0.03);
  EXPECT_EQ(setup.camera.lens[0].width, 320);
  EXPECT_EQ(setup.camera.lens[1].p, 285);
  EXPECT_EQ(setup.camera.lens[1].cx, 481);
  EXPECT_EQ(setup.camera.lens[1].turn.pitch, 1.5);
  EXPECT_EQ(setup.camera.lens[1].width, 960);
}

TEST(Setup, ThePanoramaIsTwiceAsWideAsAnUprightPictureIsHigh) {
  profile::CameraSettings given;
  for (profile::LensSettings& lens : given.lens) lens.p = 100;
  EXPECT_EQ(make_setup(tool::KnownCamera(), given, {{600, 500}, {600, 500}}).width, 1000);
  EXPECT_EQ(make_setup(tool::KnownCamera(), given, {{600, 502}, {600, 502}}).width, 1000);
  given.lens[0].mount = 90;
  EXPECT_EQ(make_setup(tool::KnownCamera(), given, {{600, 500}, {600, 500}}).width, 1200);
  EXPECT_EQ(make_setup(tool::KnownCamera(), given, {{16000, 16000}, {600, 500}}).width, 16384);
}

}  // namespace
}  // namespace biseam::tool
