#include "stages/lens/remap.hpp"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cmath>
#include <limits>

#include "stages/lens/remap_fixture.hpp"

namespace biseam::test {
namespace {

TEST(RemapYpoint, RandomRegionsEqualThePlainFormula) {
  const unsigned seed = 20601;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (int round = 0; round < 400; ++round) {
    const int y_factor = pick(random, 1, 2), height = pick(random, 1, 14), table_width = pick(random, 1, 40);
    const int table_column = pick(random, 0, table_width - 1), count = pick(random, 0, table_width - table_column);
    const int column = pick(random, 0, 9), width = column + count + pick(random, 0, 6);
    const int first_row = pick(random, 0, height - 1), end_row = pick(random, 0, height + 3);
    Picture source(23, 18, 18, 3), expected(width, height, height / y_factor, 2), result(width, height, height / y_factor, 2);
    source.fill(random);
    const auto table = exact_copy(random_table(random, table_width * height, 23, 18));
    plain_region(table.get(), table_width, table_column, source.header, expected.header, column, count, first_row, end_row,
                 y_factor);
    remap_ypoint(table.get(), table_width, table_column, &source.header, &result.header, column, count, first_row, end_row, 2,
                 y_factor);
    ASSERT_TRUE(same_bytes(expected, result)) << "round " << round;
    ASSERT_TRUE(result.guards_intact()) << "round " << round;
  }
}

// A table, a source and a destination of one entry pattern, for the cases below.
class RemapCase : public testing::Test {
 protected:
  static constexpr int kWidth = 6, kHeight = 4;

  RemapCase() {
    Random random(20602);
    source.fill(random);
  }

  void fill_table(float u, float v) {
    table.resize(2 * kWidth * kHeight);
    for (std::size_t i = 0; i < table.size(); i += 2) {
      table[i] = u;
      table[i + 1] = v;
    }
  }
  void remap(Picture& destination, int count, int first_row, int end_row, int y_factor) {
    const auto entries = exact_copy(table);
    remap_ypoint(entries.get(), kWidth, 0, &source.header, &destination.header, 0, count, first_row, end_row, 2, y_factor);
    EXPECT_TRUE(destination.guards_intact());
  }

  std::vector<float> table;
  Picture source{20, 16, 16, 1};
  Picture half{kWidth, kHeight, kHeight / 2, 1}, full{kWidth, kHeight, kHeight, 1};
};

TEST_F(RemapCase, IntegralCoordinatesCopyThePixel) {
  fill_table(6.0f, 8.0f);
  remap(half, kWidth, 0, kHeight, 2);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) EXPECT_EQ(half.luma_at(x, y), source.luma_at(6, 8));
  }
  for (int pair = 0; pair < kWidth / 2; ++pair) {
    EXPECT_EQ(half.chroma_at(pair, 0, 1), source.chroma_at(3, 0, 4));
    EXPECT_EQ(half.chroma_at(pair, 1, 1), source.chroma_at(3, 1, 4));
  }
}

TEST_F(RemapCase, HalfColumnLeavesLumaUnmixed) {
  fill_table(6.5f, 8.0f);
  remap(half, kWidth, 0, kHeight, 2);
  EXPECT_EQ(half.luma_at(2, 2), source.luma_at(6, 8));
}

TEST_F(RemapCase, HalfChromaColumnMixesBothNeighbours) {
  fill_table(7.0f, 8.0f);  // 3.5 chroma samples
  remap(half, kWidth, 0, kHeight, 2);
  for (int component = 0; component < 2; ++component) {
    const int sum = source.chroma_at(3, component, 4) + source.chroma_at(4, component, 4);
    EXPECT_EQ(half.chroma_at(0, component, 0), sum / 2);
  }
}

TEST_F(RemapCase, LumaMixesWithThePixelBelow) {
  fill_table(6.0f, 8.25f);
  source.luma_at(6, 8) = 100;
  source.luma_at(6, 9) = 200;
  remap(half, kWidth, 0, kHeight, 2);
  EXPECT_EQ(half.luma_at(0, 0), 125);
}

TEST_F(RemapCase, NegativeCoordinateReadsZeroAndKeepsItsFraction) {
  fill_table(0.0f, -0.5f);
  source.luma_at(0, 0) = 100;
  source.luma_at(0, 1) = 40;
  remap(half, kWidth, 0, kHeight, 2);
  EXPECT_EQ(half.luma_at(0, 0), 130);  // 1.5 * 100 - 0.5 * 40
}

TEST_F(RemapCase, ValueBelowZeroIsStoredAsZero) {
  fill_table(0.0f, -0.5f);
  source.luma_at(0, 0) = 10;
  source.luma_at(0, 1) = 250;
  remap(half, kWidth, 0, kHeight, 2);
  EXPECT_EQ(half.luma_at(0, 0), 0);
}

TEST_F(RemapCase, ValueAboveAByteKeepsItsLowByte) {
  fill_table(0.0f, -0.5f);
  source.luma_at(0, 0) = 250;
  source.luma_at(0, 1) = 10;
  remap(half, kWidth, 0, kHeight, 2);
  EXPECT_EQ(half.luma_at(0, 0), (375 - 5) & 0xFF);
}

TEST_F(RemapCase, NanCoordinateReadsPositionZeroAndStoresZero) {
  fill_table(std::numeric_limits<float>::quiet_NaN(), 3.0f);
  remap(half, kWidth, 0, kHeight, 2);
  EXPECT_EQ(half.luma_at(0, 0), 0);
  EXPECT_EQ(half.chroma_at(0, 0, 0), 0);
}

TEST_F(RemapCase, OneColumnWritesLumaAndNoChroma) {
  fill_table(6.0f, 8.0f);
  remap(half, 1, 0, kHeight, 2);
  for (int y = 0; y < kHeight; ++y) {
    EXPECT_EQ(half.luma_at(0, y), source.luma_at(6, 8));
    EXPECT_TRUE(half.luma.untouched(y * half.luma_stride + 1, (y + 1) * half.luma_stride));
  }
  EXPECT_TRUE(half.chroma.untouched(0, half.chroma.bytes()));
}

TEST_F(RemapCase, NoColumnsWriteNothing) {
  fill_table(6.0f, 8.0f);
  for (const int count : {0, -1, -7}) remap(half, count, 0, kHeight, 2);
  EXPECT_TRUE(half.luma.untouched(0, half.luma.bytes()));
  EXPECT_TRUE(half.chroma.untouched(0, half.chroma.bytes()));
}

TEST_F(RemapCase, SecondRowIsWrittenThoughItIsTheEndRow) {
  fill_table(6.0f, 8.0f);
  remap(half, kWidth, 0, 1, 2);
  EXPECT_EQ(half.luma_at(0, 1), source.luma_at(6, 8));
  EXPECT_TRUE(half.luma.untouched(2 * half.luma_stride, half.luma.bytes()));
  EXPECT_TRUE(half.chroma.untouched(half.chroma_stride, half.chroma.bytes()));
}

TEST_F(RemapCase, FullHeightChromaGetsEverySecondRow) {
  fill_table(6.0f, 8.0f);
  remap(full, kWidth, 0, kHeight, 1);
  for (int y = 0; y < kHeight; ++y) {
    if (y % 2 == 0) {
      EXPECT_EQ(full.chroma_at(0, 0, y), source.chroma_at(3, 0, 8)) << y;
    } else {
      EXPECT_TRUE(full.chroma.untouched(y * full.chroma_stride, (y + 1) * full.chroma_stride)) << y;
    }
  }
}

TEST_F(RemapCase, RowsPastTheDestinationAreNeitherReadNorWritten) {
  for (const int height : {3, 1}) {
    SCOPED_TRACE(height);
    fill_table(6.0f, 8.0f);
    table.resize(2 * kWidth * height);
    Picture destination(kWidth, height, height / 2, 0);
    remap(destination, kWidth, 0, kHeight + 3, 2);
    EXPECT_EQ(destination.luma_at(kWidth - 1, height - 1), source.luma_at(6, 8));
  }
}

TEST_F(RemapCase, RowsAndColumnsBeforeTheTableAreNeitherReadNorWritten) {
  fill_table(6.0f, 8.0f);
  const auto entries = exact_copy(table);
  remap_ypoint(entries.get(), kWidth, -3, &source.header, &half.header, 0, kWidth, -4, kHeight, 2, 2);
  EXPECT_TRUE(half.guards_intact());
  for (int y = 0; y < kHeight; ++y) {
    EXPECT_TRUE(half.luma.untouched(y * half.luma_stride, y * half.luma_stride + 3));
    EXPECT_EQ(half.luma_at(3, y), source.luma_at(6, 8));
  }
  EXPECT_TRUE(half.chroma.untouched(0, 2));
  EXPECT_EQ(half.chroma_at(1, 0, 0), source.chroma_at(3, 0, 4));
}

TEST_F(RemapCase, ColumnsPastTheTableAreNeitherReadNorWritten) {
  fill_table(6.0f, 8.0f);
  const auto entries = exact_copy(table);
  remap_ypoint(entries.get(), kWidth, 4, &source.header, &half.header, 0, kWidth, 0, kHeight, 2, 2);
  EXPECT_TRUE(half.guards_intact());
  EXPECT_EQ(half.luma_at(1, 3), source.luma_at(6, 8));
  EXPECT_TRUE(half.luma.untouched(3 * half.luma_stride + 2, half.luma.bytes()));
  EXPECT_TRUE(half.chroma.untouched(2, half.chroma_stride));
}

TEST_F(RemapCase, ZeroChromaFactorWritesNoChroma) {
  fill_table(6.0f, 8.0f);
  remap(half, kWidth, 0, kHeight, 0);
  EXPECT_EQ(half.luma_at(0, 0), source.luma_at(6, 8));
  EXPECT_TRUE(half.chroma.untouched(0, half.chroma.bytes()));
}

TEST_F(RemapCase, OddColumnsRoundDownToChromaPairs) {
  fill_table(6.0f, 8.0f);
  table[2 * 2] = 10.0f;  // entry 2 is the pair of table column 3
  const auto entries = exact_copy(table);
  remap_ypoint(entries.get(), kWidth, 3, &source.header, &half.header, 1, 2, 0, 2, 2, 2);
  EXPECT_EQ(half.chroma_at(0, 0, 0), source.chroma_at(5, 0, 4));
  EXPECT_TRUE(half.chroma.untouched(2, half.chroma.bytes()));
}

TEST(RemapYpoint, SourcesPastTwoGigabytesAreAddressed) {
  if (sizeof(void*) < 8) GTEST_SKIP() << "needs 64-bit addresses";
  const int stride = 1 << 20, rows = 2600;
  const std::size_t bytes = static_cast<std::size_t>(stride) * rows;
  void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (block == MAP_FAILED) GTEST_SKIP() << "no address space";
  uint8_t* plane = static_cast<uint8_t*>(block);
  plane[std::size_t{2500} * stride + 7] = 201;
  plane[std::size_t{2500} * stride + 6] = 99;
  ImageHeader source{};
  source.planes[0] = source.planes[1] = plane;
  source.strides[0] = source.strides[1] = stride;
  const float table[] = {7.0f, 2500.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
  Picture destination(2, 2, 2, 0);
  remap_ypoint(table, 2, 0, &source, &destination.header, 0, 2, 0, 2, 2, 1);
  EXPECT_EQ(destination.luma_at(0, 0), 201);
  EXPECT_EQ(destination.luma_at(1, 0), 0);
  EXPECT_EQ(destination.chroma_at(0, 0, 0), 49);  // 3.5 samples: half of byte 6 and half of byte 8
  munmap(block, bytes);
}

// Wide enough for whole vectors, with entries near each other and far apart on both sides of the limits of 32-bit offsets.
TEST(RemapYpoint, WideRowsOfSourcesPastFourGigabytesAreAddressed) {
  if (sizeof(void*) < 8) GTEST_SKIP() << "needs 64-bit addresses";
  constexpr int stride = 1 << 21, count = 96;
  const std::size_t bytes = std::size_t{stride} * 2100;
  void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (block == MAP_FAILED) GTEST_SKIP() << "no address space";
  uint8_t* plane = static_cast<uint8_t*>(block);
  ImageHeader source{};
  source.planes[0] = source.planes[1] = plane;
  source.strides[0] = source.strides[1] = stride;
  Random random(20606);
  std::vector<float> table(4 * count);
  const auto address = [&](const float* entry) {
    return plane + std::size_t{stride} * static_cast<std::size_t>(entry[1]) + static_cast<std::size_t>(entry[0]);
  };
  for (int k = 0; k < 2 * count; ++k) {
    static constexpr int rows[] = {0, 510, 1022, 1023, 2046, 2090};
    const bool near = k % 64 < 32;
    table[2 * k] = static_cast<float>(stride - 2048 + 2 * (near ? k % 8 : pick(random, 0, 1000)));
    table[2 * k + 1] = static_cast<float>(rows[k / 32] + (near ? k % 4 : 0));
    for (int i = 0; i < 2; ++i) address(&table[2 * k])[i] = static_cast<uint8_t>(random());
  }
  Picture expected(count, 2, 2, 0), result(count, 2, 2, 0);
  for (int x = 0; x < count; ++x) {
    for (int y = 0; y < 2; ++y) expected.luma_at(x, y) = *address(&table[2 * (y * count + x)]);
    expected.chroma_at(x / 2, x % 2, 0) = address(&table[2 * (x / 2 * 2)])[x % 2];
  }
  remap_ypoint(table.data(), count, 0, &source, &result.header, 0, count, 0, 2, 2, 1);
  EXPECT_TRUE(same_bytes(expected, result));
  munmap(block, bytes);
}

}  // namespace
}  // namespace biseam::test
