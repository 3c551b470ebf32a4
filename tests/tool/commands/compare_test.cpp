#include <gtest/gtest.h>

#include "picture/write_picture.hpp"
#include "tool/support/command_line.hpp"
#include "tool/support/samples.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::run_tool;
using test::ScratchFolder;

std::string grey_file(const ScratchFolder& folder, const std::string& name, Size size, int code) {
  Nv12 picture(size.width, size.height);
  picture.luma.assign(picture.luma.size(), std::uint8_t(code));
  picture.chroma.assign(picture.chroma.size(), 128);
  write_picture(folder / name, picture);
  return folder / name;
}

TEST(CompareCommand, PrintsInfForIdenticalPictures) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 32}, 90);
  const test::Outcome outcome = run_tool({"compare", a, a});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_NE(outcome.output.find("whole picture        inf         inf   1.0000\n"), std::string::npos) << outcome.output;
}

// A difference that 8 bits can't show.
TEST(CompareCommand, SeesTheLastOfTwelveBits) {
  const ScratchFolder folder;
  for (const unsigned value : {2000u, 2001u}) {
    const Libav<AVFrame> frame = test::make_frame(AV_PIX_FMT_GBRP12, 64, 32);
    test::fill(*frame, [&](int, int, int) { return value; });
    write_picture(folder / (std::to_string(value) + ".png"), *frame);
  }
  const test::Outcome outcome = run_tool({"compare", "--json", folder / "2000.png", folder / "2001.png"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_NE(outcome.output.find("\"whole\": {\"psnr\": 72.24"), std::string::npos) << outcome.output;  // 20 lg 4095
}

TEST(CompareCommand, PrintsJson) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 32}, 100), b = grey_file(folder, "b.png", {64, 32}, 110);
  const std::string same = run_tool({"compare", "--json", a, a}).output, other = run_tool({"compare", "--json", a, b}).output;
  EXPECT_NE(same.find("\"whole\": {\"psnr\": null, \"weighted_psnr\": null, \"ssim\": 1.000000}"), std::string::npos) << same;
  EXPECT_NE(other.find("\"seam1\": {\"psnr\": 28.130804, \"weighted_psnr\": 28.130804, \"ssim\": "), std::string::npos)
      << other;
}

TEST(CompareCommand, RefusesPicturesOfDifferentSizes) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 32}, 90), b = grey_file(folder, "b.png", {64, 34}, 90);
  const test::Outcome outcome = run_tool({"compare", a, b});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_EQ(outcome.message, b + ": 64x34 pixels, but " + a + " has 64x32");
  EXPECT_EQ(outcome.output, "");
}

TEST(CompareCommand, RefusesPicturesSmallerThanAWindow) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 10}, 90);
  EXPECT_EQ(run_tool({"compare", a, a}).exit_code, 3);
}

TEST(CompareCommand, LeastPsnrDecidesTheExitCode) {
  const ScratchFolder folder;
  const std::string a = grey_file(folder, "a.png", {64, 32}, 100), b = grey_file(folder, "b.png", {64, 32}, 110);
  EXPECT_EQ(run_tool({"compare", a, b, "--least-psnr", "28.1"}).exit_code, 0);
  EXPECT_EQ(run_tool({"compare", a, b, "--least-psnr", "28.2"}).exit_code, 1);
  EXPECT_EQ(run_tool({"compare", a, a, "--least-psnr", "99"}).exit_code, 0);
}

}  // namespace
}  // namespace biseam::tool
