#include "base/arena.hpp"

#include <gtest/gtest.h>

#include <cstdint>

#include "biseam/biseam.h"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

MemoryCursor cursor_over(uint8_t* base, int size) { return {base, base + size - 1, base}; }

TEST(AllocBuffer, FirstRequestForTheWholeSizeIsRefused) {
  alignas(128) uint8_t block[512];
  MemoryCursor cursor = cursor_over(block, 512);
  EXPECT_EQ(nullptr, QOR_AllocBuffer_bi(&cursor, 512));
  EXPECT_EQ(block, cursor.current);
  EXPECT_EQ(block, QOR_AllocBuffer_bi(&cursor, 511));
  EXPECT_EQ(block + 512, cursor.current);
}

TEST(AllocBuffer, LaterPiecesStartOn128ByteAddresses) {
  alignas(128) uint8_t block[2048];
  for (const int shift : {0, 1, 16, 127}) {
    for (const int bytes : {0, 1, 100, 127, 128, 129, 300}) {
      MemoryCursor cursor = cursor_over(block + shift, 1024);
      EXPECT_EQ(block + shift, QOR_AllocBuffer_bi(&cursor, bytes));
      const int next = (shift + bytes + 127) / 128 * 128;
      EXPECT_EQ(block + next, cursor.current);
      EXPECT_EQ(block + next, QOR_AllocBuffer_bi(&cursor, 1));
      EXPECT_EQ(block + shift, cursor.base);
      EXPECT_EQ(block + shift + 1023, cursor.last);
    }
  }
}

TEST(AllocBuffer, RefusalChangesNothing) {
  alignas(128) uint8_t block[512];
  MemoryCursor cursor = cursor_over(block, 512);
  ASSERT_EQ(block, QOR_AllocBuffer_bi(&cursor, 200));
  EXPECT_EQ(nullptr, QOR_AllocBuffer_bi(&cursor, 256));  // 255 are left
  EXPECT_EQ(block + 256, cursor.current);
  EXPECT_EQ(block + 256, QOR_AllocBuffer_bi(&cursor, 255));
}

// The cursor may end past the block: what is left is then negative, and even an empty piece is refused.
TEST(AllocBuffer, PastTheEndNothingIsLeft) {
  alignas(128) uint8_t block[512];
  MemoryCursor cursor = cursor_over(block, 300);
  EXPECT_EQ(block, QOR_AllocBuffer_bi(&cursor, 299));
  EXPECT_EQ(block + 384, cursor.current);
  EXPECT_EQ(nullptr, QOR_AllocBuffer_bi(&cursor, 0));
}

TEST(AllocBuffer, LargestRequestIsRefused) {
  alignas(128) uint8_t block[512];
  MemoryCursor cursor = cursor_over(block, 512);
  EXPECT_EQ(nullptr, QOR_AllocBuffer_bi(&cursor, INT32_MAX));
  EXPECT_EQ(block, cursor.current);
}

TEST(BlockSize, IsWholeUnitsAndOneMore) {
  EXPECT_EQ(128, block_size(0));
  EXPECT_EQ(128, block_size(127));
  EXPECT_EQ(256, block_size(128));
  EXPECT_EQ((int64_t{1} << 40) + 128, block_size((int64_t{1} << 40) + 5));
}

TEST(Carver, TakesPieceAfterPieceUntilOneDoesNotFit) {
  alignas(128) uint8_t block[512];
  Carver carver(block, 512);
  uint8_t *first, *second, *third;
  carver.take(first, 100);
  carver.take(second, 100);
  EXPECT_EQ(block, first);
  EXPECT_EQ(block + 128, second);
  EXPECT_TRUE(carver.complete());
  carver.take(third, 256);  // 255 are left
  EXPECT_EQ(nullptr, third);
  carver.take(third, 255);
  EXPECT_EQ(block + 256, third);
  EXPECT_FALSE(carver.complete());  // whatever fits later
}

TEST(Carver, ImpossibleSizesAreNull) {
  alignas(128) uint8_t block[512];
  for (const int64_t bytes : {int64_t{-1}, int64_t{INT32_MAX} + 1, INT64_MIN, INT64_MAX}) {
    Carver carver(block, 512);
    uint8_t* piece = block;
    carver.take(piece, bytes);
    EXPECT_EQ(nullptr, piece) << bytes;
    EXPECT_FALSE(carver.complete()) << bytes;
  }
}

TEST(Carver, WithoutABlockNothingFits) {
  Carver carver(nullptr, 4096);
  EXPECT_FALSE(carver.complete());
  uint8_t byte = 0, *piece = &byte;
  carver.take(piece, 0);
  EXPECT_EQ(nullptr, piece);
}

// Of a block with room for every piece none is missing, wherever the block lies, and no two overlap.
TEST(RoomFor, IsEnoughAtEveryAddress) {
  RandomSource random;
  alignas(128) static uint8_t memory[16384];
  for (int shift = 0; shift < 128; ++shift) {
    int64_t sizes[12], room = 1;  // a piece ends before the block's last byte
    for (int64_t& size : sizes) room += room_for(size = random.between(0, 700));
    ASSERT_LE(shift + room, int64_t{sizeof memory});
    Carver carver(memory + shift, room);
    const uint8_t* end = memory + shift;
    for (const int64_t size : sizes) {
      uint8_t* piece;
      carver.take(piece, size);
      ASSERT_NE(nullptr, piece) << shift;
      EXPECT_GE(piece, end);
      end = piece + size;
    }
    EXPECT_TRUE(carver.complete());
    EXPECT_LE(end, memory + shift + room);
  }
}

}  // namespace
}  // namespace biseam::test
