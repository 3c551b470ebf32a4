#include "tag/cut_short.hpp"

#include <gtest/gtest.h>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

std::string big_endian(std::uint64_t value, int bytes) {
  std::string text;
  for (int k = bytes - 1; k >= 0; --k) text += char(value >> (8 * k) & 0xff);
  return text;
}

std::string box(const std::string& name, std::size_t content) {
  return big_endian(8 + content, 4) + name + std::string(content, '\1');
}

std::string long_box(const std::string& name, std::size_t content) {
  return big_endian(1, 4) + name + big_endian(16 + content, 8) + std::string(content, '\1');
}

// Sizes of Matroska in the given number of bytes.
std::string element(const std::string& name, std::size_t content, int size_bytes) {
  const std::uint64_t marker = std::uint64_t(1) << (7 * size_bytes);
  return name + big_endian(marker | content, size_bytes) + std::string(content, '\1');
}

const std::string kHead = "\x1a\x45\xdf\xa3", kSegment = "\x18\x53\x80\x67", kVoid = "\xec";

class CutShort : public testing::Test {
 protected:
  bool is_cut(const std::string& bytes) const {
    test::write_bytes(folder_ / "clip", bytes);
    return is_cut_short(folder_ / "clip");
  }

  // A file of these parts is whole up to the end of each, and cut anywhere else.
  void expect_whole_at_ends(const std::vector<std::string>& parts, std::size_t first) const {
    std::string all;
    std::vector<std::size_t> ends;
    for (const std::string& part : parts) ends.push_back((all += part).size());
    for (std::size_t size = first; size <= all.size(); ++size) {
      const bool at_end = std::find(ends.begin(), ends.end(), size) != ends.end();
      EXPECT_EQ(is_cut(all.substr(0, size)), !at_end) << size;
    }
  }

  test::ScratchFolder folder_;
};

TEST_F(CutShort, BoxesEndWhereTheySay) {
  expect_whole_at_ends({box("ftyp", 12), box("free", 0), long_box("mdat", 30), box("moov", 5), long_box("free", 0)}, 1);
}

TEST_F(CutShort, ABoxWithoutASizeLastsToTheEnd) {
  const std::string open = box("ftyp", 4) + big_endian(0, 4) + "mdat";
  EXPECT_FALSE(is_cut(open));
  EXPECT_FALSE(is_cut(open + std::string(100, '\2')));
}

TEST_F(CutShort, SizesSmallerThanTheirHeadAreNone) {
  for (const std::uint64_t size : {2, 7})
    EXPECT_TRUE(is_cut(box("ftyp", 4) + big_endian(size, 4) + "mdat" + std::string(50, 'x')));
  for (const std::uint64_t size : {0, 1, 8, 15}) {
    EXPECT_TRUE(is_cut(big_endian(1, 4) + "mdat" + big_endian(size, 8) + std::string(50, 'x'))) << size;
  }
}

TEST_F(CutShort, SizesOfAnyGreatnessEndBeyondTheFile) {
  for (const std::uint64_t size : {std::uint64_t(1) << 32, ~std::uint64_t(0) >> 1, ~std::uint64_t(0)}) {
    EXPECT_TRUE(is_cut(big_endian(1, 4) + "mdat" + big_endian(size, 8) + std::string(50, 'x'))) << size;
  }
  EXPECT_TRUE(is_cut(big_endian(0xffffffff, 4) + "mdat"));
}

TEST_F(CutShort, ElementsEndWhereTheySay) {
  for (int bytes = 1; bytes <= 8; ++bytes) {
    expect_whole_at_ends({element(kHead, 20, bytes), element(kVoid, 0, bytes), element(kSegment, 50, bytes)}, 4);
  }
}

TEST_F(CutShort, AnElementOfUnknownSizeLastsToTheEnd) {
  for (int bytes = 1; bytes <= 8; ++bytes) {
    const std::string unknown = big_endian((std::uint64_t(1) << (7 * bytes)) * 2 - 1, bytes);
    EXPECT_FALSE(is_cut(element(kHead, 20, 1) + kSegment + unknown)) << bytes;
    EXPECT_FALSE(is_cut(element(kHead, 20, 1) + kSegment + unknown + std::string(9, '\3'))) << bytes;
  }
}

TEST_F(CutShort, WhatIsNoElementIsDamage) {
  EXPECT_TRUE(is_cut(element(kHead, 20, 1) + std::string(3, '\0')));
  EXPECT_TRUE(is_cut(element(kHead, 20, 1) + kSegment + std::string(20, '\0')));
}

TEST_F(CutShort, AFileThatIsNotThereIsNamed) {
  const auto [code, line] = test::failure_of([&] { is_cut_short(folder_ / "none"); });
  EXPECT_EQ(code, ExitCode::input);
  test::expect_one_line_naming(line, folder_ / "none");
}

}  // namespace
}  // namespace biseam::tool
