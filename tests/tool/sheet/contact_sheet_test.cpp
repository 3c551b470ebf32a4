#include "sheet/contact_sheet.hpp"

#include <gtest/gtest.h>

#include "tool/sheet/plain_picture.hpp"

namespace biseam::tool {
namespace {

using test::plain;

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

}  // namespace
}  // namespace biseam::tool
