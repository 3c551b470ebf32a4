#include "sheet/contact_sheet.hpp"

#include <gtest/gtest.h>

#include <algorithm>

#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "tool/support/command_line.hpp"
#include "tool/support/nv12_picture.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

Rgb plain(int width, int height, std::uint8_t code) {
  Rgb picture(width, height);
  picture.bytes.assign(picture.bytes.size(), code);
  return picture;
}

TEST(ContactSheet, OfOnePictureWithoutCaptionIsThePicture) {
  const Rgb picture = plain(40, 20, 77), page = contact_sheet({{picture, ""}}, {2, 40});
  EXPECT_EQ(page.width, 40);
  EXPECT_EQ(page.height, 20);
  EXPECT_EQ(page.bytes, picture.bytes);
}

TEST(ContactSheet, PutsPanelsRowByRowWithinMargins) {
  const Rgb page = contact_sheet({{plain(80, 40, 200), ""}, {plain(40, 20, 100), ""}, {plain(40, 20, 50), ""}}, {2, 40});
  EXPECT_EQ(page.width, 4 + 40 + 4 + 40 + 4);
  EXPECT_EQ(page.height, 4 + 20 + 4 + 20 + 4);
  const auto at = [&](int x, int y) { return int(page.bytes[std::size_t(y * page.width + x) * 3]); };
  EXPECT_EQ(at(4, 4), 200);
  EXPECT_EQ(at(48, 4), 100);
  EXPECT_EQ(at(4, 28), 50);
  EXPECT_EQ(at(48, 28), at(0, 0));
}

TEST(ContactSheet, CutsCaptionsThatAreTooLong) {
  const Rgb page = contact_sheet({{plain(40, 20, 0), std::string(300, 'W')}}, {1, 40});
  bool inked = false;
  for (int y = 24; y < page.height; ++y) inked |= page.bytes[std::size_t(y * page.width + 20) * 3] > 100;
  EXPECT_TRUE(inked);
  for (int y = 24; y < page.height; ++y) EXPECT_EQ(page.bytes[std::size_t(y * page.width + page.width - 1) * 3], page.bytes[0]);
}

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
