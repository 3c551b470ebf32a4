#include "camera/setup.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

std::pair<ExitCode, std::string> refusal(const std::string& profile) {
  return test::failure_of([&] { make_setup(profile, {}, {{96, 96}, {96, 96}}); });
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

}  // namespace
}  // namespace biseam::tool
