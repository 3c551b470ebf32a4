#include "frame/remap/sample_region.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/isas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

// A picture of two planes between guards.
struct Planes {
  Planes(int width, int height)
      : luma(static_cast<std::size_t>(width * height)), chroma(static_cast<std::size_t>(width * height)) {
    header.width = width;
    header.height = height;
    header.planes[0] = luma.data();
    header.planes[1] = chroma.data();
    header.strides[0] = header.strides[1] = width;
  }

  void fill(RandomSource& random) {
    for (int i = 0; i < header.width * header.height; ++i) luma.data()[i] = random.byte(), chroma.data()[i] = random.byte();
  }

  GuardedBlock<uint8_t> luma, chroma;
  ImageHeader header{};
};

constexpr int kSourceWidth = 90, kSourceHeight = 70;

// Positions inside the source with room for the neighbours: neighbouring ones as lenses give them, or any.
std::vector<float> positions(RandomSource& random, int width, int rows, bool smooth) {
  std::vector<float> table;
  const auto fraction = [&] { return static_cast<float>(random.between(0, 1023)) / 1024.0f; };
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < width; ++x) {
      const int column = smooth ? 2 + x * 80 / width : random.between(-2, kSourceWidth - 4);
      const int row = smooth ? 2 + y : random.between(-2, kSourceHeight - 4);
      table.push_back(static_cast<float>(column) + fraction());
      table.push_back(static_cast<float>(row) + fraction());
    }
  }
  return table;
}

class SampleRegions : public testing::TestWithParam<Isa> {
 protected:
  void SetUp() override { limit_isa(GetParam()); }
  void TearDown() override { limit_isa(before_); }

  // One region by both; columns and rows may leave the table and the destination.
  void check(int round, bool inside) {
    const int y_factor = random_.between(1, 2), table_width = random_.between(1, 150), table_rows = random_.between(2, 40);
    Planes source(kSourceWidth, kSourceHeight);
    source.fill(random_);
    const std::vector<float> table = positions(random_, table_width, table_rows, round % 2 == 0);
    const int slack = inside ? 0 : 5;
    const int column = random_.between(-slack, table_width - 1), count = random_.between(0, table_width - column + slack);
    const int to = random_.between(0, 9);
    const int last = inside ? table_rows / 2 * 2 : table_rows;
    const int height = inside ? last : random_.between(1, table_rows);
    Planes want(std::max(2, to + count + 2), height), got(want.header.width, height);
    RemapRegion region{table.data(), table_width, column,  &source.header,
                       &want.header, to,          count,   inside ? 0 : 2 * random_.between(-2, 3),
                       last,         2,           y_factor};
    remap_region(region);
    region.destination = &got.header;
    sample_region(region);
    ASSERT_EQ(want.luma.values(), got.luma.values()) << "round " << round;
    ASSERT_EQ(want.chroma.values(), got.chroma.values()) << "round " << round;
  }

 private:
  RandomSource random_;
  const Isa before_ = isa_in_use();
};

TEST_P(SampleRegions, EqualTheDefinition) {
  for (int round = 0; round < 300; ++round) ASSERT_NO_FATAL_FAILURE(check(round, true));
}

TEST_P(SampleRegions, EqualTheDefinitionWhereTableAndDestinationEnd) {
  for (int round = 0; round < 300; ++round) ASSERT_NO_FATAL_FAILURE(check(round, false));
}

INSTANTIATE_TEST_SUITE_P(Versions, SampleRegions, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
