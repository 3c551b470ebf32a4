#include "clip/write/index_bytes.hpp"

#include <gtest/gtest.h>

#include <string>

namespace biseam::tool {
namespace {

void write(IndexBytes& index, const std::string& text) {
  avio_write(index.context(), reinterpret_cast<const unsigned char*>(text.data()), int(text.size()));
  avio_flush(index.context());
}

std::string taken(IndexBytes& index) {
  const Bytes bytes = index.take();
  return {bytes.begin(), bytes.end()};
}

TEST(IndexBytes, TheBeginningAndTheEndAreKeptAndPacketsCounted) {
  IndexBytes index;
  write(index, "head");
  EXPECT_EQ(avio_tell(index.context()), 4);
  EXPECT_EQ(taken(index), "head");
  write(index, "packet");
  EXPECT_EQ(avio_tell(index.context()), 4 + 6 + 1) << "and a gap";
  write(index, "another");
  EXPECT_EQ(avio_tell(index.context()), 4 + 6 + 1 + 7 + 1);
  index.keep();
  write(index, "index");
  EXPECT_EQ(taken(index), "index");
  EXPECT_EQ(taken(index), "");
}

TEST(IndexBytes, WhatIsKeptMayBeMendedAndPacketsSizesToo) {
  IndexBytes index;
  write(index, "head of 00");
  avio_seek(index.context(), 8, SEEK_SET);
  write(index, "12");
  EXPECT_EQ(taken(index), "head of 12");
  write(index, "packet");
  index.keep();
  const std::int64_t begin = avio_tell(index.context());
  write(index, "index");
  avio_seek(index.context(), 4, SEEK_SET);  // before what is kept
  write(index, "size");
  avio_seek(index.context(), begin + 7, SEEK_SET);  // beyond it
  write(index, "end");
  EXPECT_EQ(taken(index), std::string("index\0\0end", 10));
  EXPECT_EQ(avio_size(index.context()), begin + 10);
}

// More than fits the buffer that libav writes through.
TEST(IndexBytes, TheHeadMayBeOfAnyLength) {
  IndexBytes index;
  std::string head;
  for (int k = 0; k < 300000; ++k) head += char(k % 251);
  write(index, head);
  EXPECT_TRUE(taken(index) == head);
}

}  // namespace
}  // namespace biseam::tool
