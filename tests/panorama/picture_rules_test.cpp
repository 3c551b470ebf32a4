#include "panorama/picture_rules.hpp"

#include <gtest/gtest.h>

#include <cstring>

#include "support/own_picture.hpp"

namespace biseam::test {
namespace {

constexpr int kWidth = 36, kHeight = 18;

struct Checked {
  int32_t code;
  ring::PicturePlanes planes{};
  BiseamError error{};
};

Checked checked(const BiseamPicture* picture, int format) {
  Checked all;
  all.code = check_picture(picture, "here", format, kWidth, kHeight, all.planes, &all.error);
  return all;
}

TEST(CheckPicture, TakesThePlanesOfEveryFormatInAnyDirection) {
  for (const TestFormat& format : kTestFormats) {
    for (const bool upwards : {false, true}) {
      SCOPED_TRACE(format.name);
      OwnPicture picture(format.code, kWidth, kHeight, {3, upwards}, BISEAM_SITING_TOP_LEFT);
      const BiseamPicture record = picture.record();
      const Checked taken = checked(&record, format.code);
      ASSERT_EQ(BISEAM_OK, taken.code) << taken.error.text;
      EXPECT_EQ(BISEAM_SITING_TOP_LEFT, taken.planes.siting);
      for (int k = 0; k < format.planes(); ++k) {
        EXPECT_EQ(record.planes[k], taken.planes.first[k]) << k;
        EXPECT_EQ(record.strides[k], taken.planes.strides[k]) << k;
      }
    }
  }
}

// Rows of exactly their bytes are enough, one byte less is not; what a format doesn't have is not looked at.
TEST(CheckPicture, StridesMayBeAsShortAsRows) {
  for (const TestFormat& format : kTestFormats) {
    SCOPED_TRACE(format.name);
    OwnPicture picture(format.code, kWidth, kHeight);
    BiseamPicture record = picture.record();
    for (int k = format.planes(); k < 3; ++k) {
      record.planes[k] = nullptr;
      record.strides[k] = 1;
    }
    EXPECT_EQ(BISEAM_OK, checked(&record, format.code).code);
    for (int k = 0; k < format.planes(); ++k) {
      for (const int sign : {1, -1}) {
        BiseamPicture shorter = record;
        shorter.strides[k] = sign * (record.strides[k] - format.sample_bytes());
        const Checked refused = checked(&shorter, format.code);
        EXPECT_EQ(BISEAM_INVALID_PICTURE, refused.code) << k;
        EXPECT_EQ(0, std::strncmp(refused.error.text, "here.strides[", 13)) << refused.error.text;
      }
    }
  }
}

// The format before the size, the size before what lies behind the planes.
TEST(CheckPicture, TheFirstBrokenRuleIsTold) {
  OwnPicture own(BISEAM_NV12, kWidth, kHeight);
  BiseamPicture picture = own.record();
  picture.strides[1] = 1;
  EXPECT_STREQ("here.strides[1] is 1: must be 36 bytes or more, up or down", checked(&picture, BISEAM_NV12).error.text);
  picture.planes[0] = nullptr;
  EXPECT_STREQ("here.planes[0] is NULL: must be a plane", checked(&picture, BISEAM_NV12).error.text);
  picture.siting = 3;
  EXPECT_STREQ("here.siting is 3: must be 0 (left), 1 (middle) or 2 (top left)", checked(&picture, BISEAM_NV12).error.text);
  picture.height = 20;
  EXPECT_STREQ("here is 36 x 20: must be 36 x 18", checked(&picture, BISEAM_NV12).error.text);
  EXPECT_STREQ("here.format is 1: must be the options', 10", checked(&picture, BISEAM_P010).error.text);
  EXPECT_STREQ("here is NULL: must be a picture", checked(nullptr, BISEAM_NV12).error.text);
}

TEST(CheckPicture, NobodyNeedsToHearOfIt) {
  ring::PicturePlanes planes{};
  EXPECT_EQ(BISEAM_INVALID_PICTURE, check_picture(nullptr, "here", BISEAM_NV12, kWidth, kHeight, planes, nullptr));
}

}  // namespace
}  // namespace biseam::test
