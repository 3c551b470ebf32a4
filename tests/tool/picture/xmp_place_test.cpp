#include "picture/xmp_place.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace biseam::tool {
namespace {

using namespace std::string_literals;

std::string place(const std::string& file, const std::string& block) {
  const auto changed = place_xmp({file.begin(), file.end()}, block);
  return {changed.begin(), changed.end()};
}

const std::string kName = "http://ns.adobe.com/xap/1.0/\0"s;
const std::string kStart = "\xff\xd8", kScan = "\xff\xda\0\2\xff\xe1\0\4not a segment\xff\xd9"s;

std::string segment(char marker, const std::string& content) {
  const std::size_t size = content.size() + 2;
  return "\xff"s + marker + char(size >> 8) + char(size & 0xff) + content;
}

std::string xmp(const std::string& block) { return segment('\xe1', kName + block); }

TEST(XmpPlace, JpegTakesItAfterJfifAndExif) {
  const std::string jfif = segment('\xe0', "JFIF\0"s), exif = segment('\xe1', "Exif\0\0II"s), icc = segment('\xe2', "ICC");
  EXPECT_EQ(place(kStart + jfif + exif + icc + kScan, "new"), kStart + jfif + exif + xmp("new") + icc + kScan);
  EXPECT_EQ(place(kStart + icc + exif + kScan, "new"), kStart + xmp("new") + icc + exif + kScan);
  EXPECT_EQ(place(kStart + kScan, "new"), kStart + xmp("new") + kScan);
}

TEST(XmpPlace, JpegExchangesTheOldOneWhereItStands) {
  const std::string icc = segment('\xe2', "ICC"), more = segment('\xe1', "http://ns.adobe.com/xmp/extension/\0more"s);
  EXPECT_EQ(place(kStart + icc + xmp("old") + more + "\xff\xff" + xmp("older") + kScan, "new"),
            kStart + icc + xmp("new") + more + "\xff\xff" + kScan);
}

TEST(XmpPlace, JpegMayHaveFillBytesBeforeAnySegment) {
  const std::string jfif = segment('\xe0', "JFIF\0"s), exif = segment('\xe1', "Exif\0\0II"s), fill = "\xff\xff";
  EXPECT_EQ(place(kStart + fill + xmp("old") + kScan, "new"), kStart + fill + xmp("new") + kScan);
  EXPECT_EQ(place(kStart + fill + jfif + fill + exif + fill + kScan, "new"),
            kStart + fill + jfif + fill + exif + fill + xmp("new") + kScan);
}

TEST(XmpPlace, JpegHasRoomForOneSegmentOnly) {
  EXPECT_EQ(place(kStart + kScan, std::string(65504, 'x')).size(), kStart.size() + kScan.size() + 65537);
  EXPECT_THROW(place(kStart + kScan, std::string(65505, 'x')), std::runtime_error);
}

// Chunks with the checksums that zlib gives for them.
const std::string kPng = "\x89PNG\r\n\x1a\n\0\0\0\1IHDRx\x2a\x6a\x0d\x8c"s, kEnd = "\0\0\0\0IEND\xae\x42\x60\x82"s;
const std::string kNew = "\0\0\0\x19iTXtXML:com.adobe.xmp\0\0\0\0\0new"s;

TEST(XmpPlace, PngTakesItAfterTheHeader) {
  const std::string text = "\0\0\0\3tEXta\0b????"s;
  const std::string changed = place(kPng + text + kEnd + "rest", "new");
  const std::string sum = changed.substr(kPng.size() + kNew.size(), 4);
  EXPECT_EQ(changed, kPng + kNew + sum + text + kEnd + "rest");
  EXPECT_EQ(place(changed, "new"), changed);
  EXPECT_EQ(place(kPng + text + kNew + "????" + kEnd, "new"), kPng + text + kNew + sum + kEnd);
}

TEST(XmpPlace, OtherFilesAreRefused) {
  const std::string end_first = kPng.substr(0, 8) + kEnd + kPng.substr(8);
  for (const std::string& file : {""s, "\xff"s, "\xff\xd8"s, "text"s, kPng.substr(0, 10), end_first}) {
    EXPECT_THROW(place(file, "new"), std::runtime_error);
  }
}

}  // namespace
}  // namespace biseam::tool
