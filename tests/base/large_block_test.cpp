#include "base/large_block.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace biseam::test {
namespace {

TEST(LargeBlock, IsZeroAndWritable) {
  // Without a large page inside, with parts of some, and with whole ones.
  for (const std::size_t bytes : {std::size_t{1}, std::size_t{4097}, std::size_t{3} << 20, (std::size_t{9} << 20) + 13}) {
    uint8_t* const block = static_cast<uint8_t*>(allocate_large_block(bytes));
    ASSERT_NE(nullptr, block);
    EXPECT_TRUE(std::all_of(block, block + bytes, [](uint8_t byte) { return byte == 0; })) << bytes;
    std::fill_n(block, bytes, uint8_t{0xA5});
    EXPECT_TRUE(std::all_of(block, block + bytes, [](uint8_t byte) { return byte == 0xA5; })) << bytes;
    std::free(block);
  }
}

TEST(LargeBlock, WhatNoSystemHasIsNull) { EXPECT_EQ(nullptr, allocate_large_block(SIZE_MAX)); }

}  // namespace
}  // namespace biseam::test
