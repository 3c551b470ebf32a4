#include "frame/seam/pick.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "stages/image/resize.hpp"
#include "support/guarded_block.hpp"
#include "support/test_image.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

// Zeros, ends and the neighbourhood of every power of two, where floats change their spacing.
int32_t any_sample(RandomSource& random) {
  const int32_t sign = random.between(0, 1) == 0 ? 1 : -1;
  switch (random.between(0, 5)) {
    case 0:
      return 0;
    case 1:
      return random.between(0, 1) == 0 ? INT32_MAX : INT32_MIN;
    case 2:
      return sign * ((1 << random.between(0, 30)) + random.between(-3, 3));
    case 3:
      return sign * (INT32_MAX - random.between(0, 200));
    default:
      return static_cast<int32_t>(random.word()) >> random.between(0, 31);
  }
}

void expect_resized(const TestImage& src, TestImage& dst) {
  TestImage from = src, expected = dst;
  ASSERT_EQ(Status::ok, resize(*from, *expected));
  GuardedBlock<uint8_t> memory(static_cast<size_t>(pick_memory_bytes(dst.width())));
  pick_image(*from, *dst, memory.data());
  ASSERT_EQ(expected.samples(), dst.samples())
      << src.width() << " x " << src.height() << " to " << dst.width() << " x " << dst.height();
  ASSERT_EQ(src.samples(), from.samples());
}

TEST(PickImage, IsTheResizedImageForAllSamples) {
  RandomSource random;
  for (int round = 0; round < 1500; ++round) {
    TestImage src(random.between(1, 20), random.between(1, 20)), dst(random.between(1, 45), random.between(1, 45), 3, kOld);
    for (int32_t& sample : src.samples()) sample = any_sample(random);
    expect_resized(src, dst);
    if (HasFatalFailure()) return;
  }
}

TEST(PickImage, EverySizePairTakesTheSameColumnsAndRows) {
  for (int src_size = 1; src_size < 40; ++src_size) {
    TestImage row(src_size, 1), column(1, src_size);
    for (int i = 0; i < 3 * src_size; ++i) row.samples()[i] = column.samples()[i] = i;
    for (int dst_size = 1; dst_size < 90; dst_size += dst_size < 45 ? 1 : 7) {
      TestImage wide(dst_size, 1), tall(1, dst_size);
      expect_resized(row, wide);
      expect_resized(column, tall);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(PickImage, LargeSizesStayInsideTheSource) {
  const int size = (1 << 24) + 4;
  std::vector<int32_t> picks(size);
  fill_picks(size, size, picks.data(), size);
  EXPECT_EQ(0, picks.front());
  EXPECT_EQ(size - 1, picks.back());
  EXPECT_TRUE(std::is_sorted(picks.begin(), picks.end()));
}

TEST(PickImage, RowsAreFoundByTheStridesOfTheRecords) {
  RandomSource random;
  TestImage src(9, 6), dst(8, 7, 3, kOld);
  src.randomize(random, -1000, 1000);
  TestImage expected = dst;
  BlendImage from = *src, to = *dst, defined = *expected;
  from.width = 6;
  to.width = defined.width = 5;
  ASSERT_EQ(Status::ok, resize(from, defined));
  GuardedBlock<uint8_t> memory(static_cast<size_t>(pick_memory_bytes(5)));
  pick_image(from, to, memory.data());
  EXPECT_EQ(expected.samples(), dst.samples());
}

TEST(PickImage, EmptyImagesWriteNothing) {
  for (const auto& [width, height] : {std::pair{0, 3}, {3, 0}, {0, 0}}) {
    TestImage empty(width, height), dst(2, 2, 3, kOld);
    pick_image(*empty, *dst, nullptr);
    EXPECT_EQ(TestImage(2, 2, 3, kOld).samples(), dst.samples());
    GuardedBlock<uint8_t> memory(static_cast<size_t>(pick_memory_bytes(width)));
    pick_image(*dst, *empty, memory.data());
  }
}

TEST(PickImage, TakesTheNearestFloatWhichIsExactBelow2To24AndSaturates) {
  TestImage src(2, 1), dst(2, 1, 3, kOld);
  src.samples() = {(1 << 24) - 1, (1 << 24) + 1, INT32_MAX, INT32_MIN, -(1 << 24) - 1, INT32_MAX - 64};
  GuardedBlock<uint8_t> memory(static_cast<size_t>(pick_memory_bytes(2)));
  pick_image(*src, *dst, memory.data());
  EXPECT_EQ((std::vector<int32_t>{(1 << 24) - 1, 1 << 24, INT32_MAX, INT32_MIN, -(1 << 24), INT32_MAX - 127}), dst.samples());
}

}  // namespace
}  // namespace biseam::test
