#include <gtest/gtest.h>

#include <algorithm>

#include "picture/write_picture.hpp"
#include "tool/sheet/plain_picture.hpp"
#include "tool/support/command_line.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::plain;

TEST(ContactSheetCommand, WantsACaptionForEveryPictureOrNone) {
  const test::ScratchFolder folder;
  write_picture(folder / "a.png", plain(40, 20, 9));
  const std::string a = folder / "a.png", out = folder / "page.png";
  EXPECT_EQ(test::run_tool({"contact-sheet", a, a, "-o", out, "--caption", "ONE"}).exit_code, 2);
  EXPECT_EQ(test::run_tool({"contact-sheet", a, a, "-o", out, "--caption", "ONE", "--caption", "TWO"}).exit_code, 0);
  EXPECT_EQ(test::run_tool({"contact-sheet", a, a, "-o", out}).exit_code, 0);
}

TEST(ContactSheetCommand, ShowsTheCropOfEveryPicture) {
  const test::ScratchFolder folder;
  Rgb picture = plain(40, 20, 9);
  for (std::size_t y = 6; y < 12; ++y) std::fill_n(&picture.bytes[(y * 40 + 10) * 3], 16 * 3, 200);
  write_picture(folder / "a.png", picture);
  const std::string a = folder / "a.png", out = folder / "page.png";
  EXPECT_EQ(test::run_tool({"contact-sheet", a, "-o", out, "--panel-width", "16", "--crop", "10,6,16,6"}).message, "");
  const Nv12 page = test::read_nv12(out);
  EXPECT_EQ(page.width, 16);
  EXPECT_EQ(page.height, 6);
  EXPECT_EQ(page.luma, std::vector<std::uint8_t>(16 * 6, 200));
  for (const char* crop : {"30,6,16,6", "-1,0,4,4", "0,0,0,4", "0,18,4,4", "1,2,3"}) {
    EXPECT_EQ(test::run_tool({"contact-sheet", a, "-o", out, std::string("--crop=") + crop}).exit_code, 2) << crop;
  }
}

}  // namespace
}  // namespace biseam::tool
