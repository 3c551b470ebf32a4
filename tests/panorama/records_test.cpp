#include "panorama/records.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>

namespace biseam::test {
namespace {

// Of version 1, and as it has grown since.
struct Old {
  uint32_t size;
  int32_t width;
};
struct Grown {
  uint32_t size;
  int32_t width, height;
};

constexpr Grown kDefaults = {sizeof(Grown), 1, 2};

TEST(ReadRecord, OfThisVersionIsTakenWhole) {
  const Grown given{sizeof(Grown), 10, 20};
  Grown read{};
  ASSERT_TRUE(read_record(&given, kDefaults, sizeof(Old), read));
  EXPECT_EQ(std::memcmp(&read, &given, sizeof read), 0);
}

// The rest of the memory is the caller's: it is not looked at.
TEST(ReadRecord, OfAnOlderVersionHasDefaultsForWhatItLacks) {
  const Grown given{sizeof(Old), 10, 99};
  Grown read{};
  ASSERT_TRUE(read_record(&given, kDefaults, sizeof(Old), read));
  EXPECT_EQ(read.width, 10);
  EXPECT_EQ(read.height, 2);
}

TEST(ReadRecord, OfAnotherSizeIsNone) {
  for (const uint32_t size : {0u, 1u, uint32_t(sizeof(Old)) - 1, uint32_t(sizeof(Grown)) + 1, ~0u}) {
    const Grown given{size, 10, 20};
    Grown read{};
    EXPECT_FALSE(read_record(&given, kDefaults, sizeof(Old), read)) << size;
    EXPECT_EQ(std::memcmp(&read, &kDefaults, sizeof read), 0) << size;
  }
  Grown read{};
  EXPECT_FALSE(read_record<Grown>(nullptr, kDefaults, sizeof(Old), read));
  EXPECT_EQ(std::memcmp(&read, &kDefaults, sizeof read), 0);
}

TEST(Report, FillsTheErrorAndGivesItsCode) {
  BiseamError error{};
  EXPECT_EQ(report(&error, BISEAM_INVALID_PICTURE, "%s is %d", "width", 7), BISEAM_INVALID_PICTURE);
  EXPECT_EQ(error.code, BISEAM_INVALID_PICTURE);
  EXPECT_STREQ(error.text, "width is 7");
  EXPECT_EQ(report(nullptr, BISEAM_INVALID_PICTURE, "%s", "nobody reads this"), BISEAM_INVALID_PICTURE);
}

TEST(Report, CutsTextsThatAreTooLong) {
  for (const std::size_t length : {sizeof BiseamError{}.text - 1, sizeof BiseamError{}.text, 10 * sizeof BiseamError{}.text}) {
    struct {
      BiseamError error;
      char behind[64];
    } placed;
    std::memset(&placed, 0x55, sizeof placed);
    report(&placed.error, BISEAM_INVALID_PICTURE, "%s", std::string(length, 'x').c_str());
    EXPECT_EQ(std::strlen(placed.error.text), sizeof placed.error.text - 1) << length;
    for (const char byte : placed.behind) EXPECT_EQ(byte, 0x55);
  }
}

}  // namespace
}  // namespace biseam::test
