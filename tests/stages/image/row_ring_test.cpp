#include "stages/image/row_ring.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>

namespace biseam::test {
namespace {

TEST(RowRing, RowsAreApartUntilTheyComeRound) {
  for (const int rows : {3, 5, 6}) {
    RowRing ring = RowRing::plain(rows, 7, 7 * rows);
    ASSERT_TRUE(ring);
    std::set<const int32_t*> places;
    for (int64_t i = 0; i < rows; ++i) {
      EXPECT_EQ(ring.row(0) + 7 * i, ring.row(i)) << "row " << i << " of " << rows;
      EXPECT_EQ(ring.row(i), ring.row(i + rows));
      EXPECT_EQ(ring.row(i), ring.row(i + int64_t{rows} * 1000000007));
      places.insert(ring.row(i));
    }
    EXPECT_EQ(static_cast<size_t>(rows), places.size());
  }
}

TEST(RowRing, ZeroedRowsAndSixteenSamplesBehindThemAreZero) {
  RowRing ring = RowRing::zeroed(3, 48);
  ASSERT_TRUE(ring);
  for (int i = 0; i < 3 * 48 + 16; ++i) ASSERT_EQ(0, ring.row(0)[i]) << i;
}

// Compilers leave out memory of which nobody but they would know.
bool is_there(RowRing ring) {
  asm volatile("" : : "r"(&ring) : "memory");
  return bool(ring);
}

TEST(RowRing, WhatTheHostCannotAddressIsNoMemory) {
  // Sizes that the compiler does not know, or it warns of them.
  const volatile int64_t most = INT64_MAX;
  EXPECT_FALSE(is_there(RowRing::plain(6, 1, most)));
  for (const volatile int64_t samples : {INT64_MAX, INT64_MAX / 2, int64_t{PTRDIFF_MAX / 8}}) {
    EXPECT_FALSE(is_there(RowRing::zeroed(5, samples)));
  }
}

}  // namespace
}  // namespace biseam::test
