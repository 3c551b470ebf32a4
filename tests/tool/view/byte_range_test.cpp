#include "view/byte_range.hpp"

#include <gtest/gtest.h>

#include <string>

namespace biseam::tool {
namespace {

constexpr std::uint64_t kBytes = 1000;

void expect_part(const std::string& header, std::uint64_t first, std::uint64_t count) {
  const ByteRange range = parse_range(header, kBytes);
  EXPECT_EQ(range.kind, RangeKind::part) << header;
  EXPECT_EQ(range.first, first) << header;
  EXPECT_EQ(range.count, count) << header;
}

TEST(ByteRange, FirstAndLast) {
  expect_part("bytes=0-0", 0, 1);
  expect_part("bytes=10-19", 10, 10);
  expect_part("bytes=0-999", 0, kBytes);
  expect_part("bytes=999-999", 999, 1);
}

TEST(ByteRange, WithoutAnEndItGoesToTheLastByte) {
  expect_part("bytes=0-", 0, kBytes);
  expect_part("bytes=999-", 999, 1);
}

TEST(ByteRange, AnEndPastTheFileIsItsLastByte) {
  expect_part("bytes=990-1000", 990, 10);
  expect_part("bytes=990-18446744073709551615", 990, 10);
  expect_part("bytes=990-99999999999999999999999", 990, 10);
}

TEST(ByteRange, TheLastSoMany) {
  expect_part("bytes=-1", 999, 1);
  expect_part("bytes=-1000", 0, kBytes);
  expect_part("bytes=-1001", 0, kBytes);
  expect_part("bytes=-99999999999999999999999", 0, kBytes);
}

TEST(ByteRange, NothingOfTheFile) {
  for (const char* header : {"bytes=1000-", "bytes=1000-1001", "bytes=-0", "bytes=99999999999999999999999-"}) {
    EXPECT_EQ(parse_range(header, kBytes).kind, RangeKind::outside) << header;
  }
  for (const char* header : {"bytes=0-", "bytes=0-0", "bytes=-1"}) {
    EXPECT_EQ(parse_range(header, 0).kind, RangeKind::outside) << header;
  }
}

TEST(ByteRange, WhatIsNoSingleRangeOfBytesIsIgnored) {
  for (const char* header :
       {"", "bytes", "bytes=", "bytes=-", "bytes=5", "bytes=9-8", "bytes=0-1,3-4", "bytes=a-", "bytes=-b", "bytes=0x1-2",
        "bytes= 0-1", "bytes=0 -1", "bytes=+0-1", "bytes=--1", "bytes=1--2", "items=0-1", "Bytes 0-1", "0-1"}) {
    EXPECT_EQ(parse_range(header, kBytes).kind, RangeKind::whole) << header;
  }
}

}  // namespace
}  // namespace biseam::tool
