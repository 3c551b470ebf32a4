// Strips of a panorama: plain part and bands.
#include <gtest/gtest.h>

#include "stages/lens/remap.hpp"
#include "stages/lens/remap_fixture.hpp"

namespace biseam::test {
namespace {

// The records of a panorama of one strip each: columns, bands and rows drawn at random.
struct Strip {
  Strip(Random& random, int format, bool middle)
      : rows(pick(random, 1, 12)),
        y_factor(format < 4 ? 2 : 1),
        plain(pick(random, 0, 30)),
        band(pick(random, 1, 12)),
        pano_column(pick(random, 0, 11)),
        table_width(plain + band + (middle ? band : 0)),
        source(30, 26, 26, 2),
        pano(pano_column + plain + 3, rows, rows / y_factor, 1),
        band0(band, rows, rows / y_factor, 0),
        band1(band, rows, rows / y_factor, 0),
        table(exact_copy(random_table(random, table_width * rows, 30, 26))) {
    source.fill(random);
    args.table = table.get();
    args.source = source.header;
    args.pano = pano.header;
    args.band0 = band0.header;
    args.plain_width = plain;
    args.pano_column = pano_column;
    args.first_row = 0;
    args.end_row = rows;
    args.format = format;
    if (middle) args.band1 = band1.header;
  }

  // The plain formula for one region of this strip.
  void expect_region(Picture& destination, int table_column, int column, int count) {
    plain_region(table.get(), table_width, table_column, source.header, destination.header, column, count, args.first_row,
                 args.end_row, y_factor);
  }

  int rows, y_factor, plain, band, pano_column, table_width;
  Picture source, pano, band0, band1;
  std::unique_ptr<float[]> table;
  RemapThreadArgs args{};
};

TEST(RemapSrc0MainPht, FillsThePlainPartAndTheBand) {
  const unsigned seed = 20603;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (int round = 0; round < 100; ++round) {
    Strip strip(random, round % 6, false);
    const bool left = round % 2 == 0;  // plain part first, or band first
    strip.args.plain_column = left ? 0 : strip.band;
    strip.args.band0_column = left ? strip.plain : 0;
    Picture pano = strip.pano, band = strip.band0;
    pano.header.planes[0] = pano.luma.data(), pano.header.planes[1] = pano.chroma.data();
    band.header.planes[0] = band.luma.data(), band.header.planes[1] = band.chroma.data();
    strip.expect_region(pano, strip.args.plain_column, strip.pano_column, strip.plain);
    strip.expect_region(band, strip.args.band0_column, 0, strip.band);
    EXPECT_EQ(remap_src0_main_pht(&strip.args), nullptr);
    ASSERT_TRUE(same_bytes(strip.pano, pano)) << "round " << round;
    ASSERT_TRUE(same_bytes(strip.band0, band)) << "round " << round;
    ASSERT_TRUE(strip.pano.guards_intact() && strip.band0.guards_intact()) << "round " << round;
  }
}

TEST(RemapSrc1MainPht, FillsBothBandsAndThePlainPart) {
  const unsigned seed = 20604;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (int round = 0; round < 100; ++round) {
    Strip strip(random, round % 6, true);
    strip.args.plain_column = strip.band;
    strip.args.band0_column = 0;
    strip.args.band1_column = strip.band + strip.plain;
    Picture pano = strip.pano, first = strip.band0, second = strip.band1;
    for (Picture* picture : {&pano, &first, &second}) {
      picture->header.planes[0] = picture->luma.data(), picture->header.planes[1] = picture->chroma.data();
    }
    strip.expect_region(first, 0, 0, strip.band);
    strip.expect_region(pano, strip.band, strip.pano_column, strip.plain);
    strip.expect_region(second, strip.band + strip.plain, 0, strip.band);
    EXPECT_EQ(remap_src1_main_pht(&strip.args), nullptr);
    ASSERT_TRUE(same_bytes(strip.pano, pano)) << "round " << round;
    ASSERT_TRUE(same_bytes(strip.band0, first)) << "round " << round;
    ASSERT_TRUE(same_bytes(strip.band1, second)) << "round " << round;
    ASSERT_TRUE(strip.pano.guards_intact() && strip.band0.guards_intact() && strip.band1.guards_intact());
  }
}

TEST(RemapSrc1MainPht, TwoHalvesEqualTheWhole) {
  Random random(20605), same(20605);
  Strip whole(random, 0, true), halves(same, 0, true);
  for (Strip* strip : {&whole, &halves}) {
    strip->args.plain_column = strip->band;
    strip->args.band1_column = strip->band + strip->plain;
  }
  const int middle = whole.rows / 4 * 2;
  ASSERT_GT(middle, 0);
  remap_src1_main_pht(&whole.args);
  halves.args.end_row = middle;
  remap_src1_main_pht(&halves.args);
  halves.args.first_row = middle;
  halves.args.end_row = whole.rows;
  remap_src1_main_pht(&halves.args);
  EXPECT_TRUE(same_bytes(whole.pano, halves.pano));
  EXPECT_TRUE(same_bytes(whole.band0, halves.band0));
  EXPECT_TRUE(same_bytes(whole.band1, halves.band1));
}

std::vector<RemapRegion> regions;
void note_region(const RemapRegion& region) { regions.push_back(region); }

RemapThreadArgs numbered_args() {
  RemapThreadArgs args{};
  args.band0.width = 8;
  args.band1.width = 10;
  args.plain_width = 100;
  args.plain_column = 1;
  args.band0_column = 2;
  args.band1_column = 3;
  args.pano_column = 4;
  args.first_row = 6;
  args.end_row = 20;
  return args;
}

void expect_region(const RemapRegion& region, const RemapThreadArgs& args, const ImageHeader& destination, int table_width,
                   int table_column, int column, int count) {
  EXPECT_EQ(region.table, args.table);
  EXPECT_EQ(region.source, &args.source);
  EXPECT_EQ(region.destination, &destination);
  EXPECT_EQ(region.table_width, table_width);
  EXPECT_EQ(region.table_column, table_column);
  EXPECT_EQ(region.destination_column, column);
  EXPECT_EQ(region.count, count);
  EXPECT_EQ(region.first_row, 6);
  EXPECT_EQ(region.end_row, 20);
  EXPECT_EQ(region.chroma_x_factor, 2);
}

TEST(RemapEdgeStrip, HandsPlainPartThenBandToTheGivenSampler) {
  regions.clear();
  const RemapThreadArgs args = numbered_args();
  remap_edge_strip(args, note_region);
  ASSERT_EQ(regions.size(), 2u);
  expect_region(regions[0], args, args.pano, 108, 1, 4, 100);
  expect_region(regions[1], args, args.band0, 108, 2, 0, 8);
}

TEST(RemapMiddleStrip, HandsBandPlainPartAndBandToTheGivenSampler) {
  regions.clear();
  const RemapThreadArgs args = numbered_args();
  remap_middle_strip(args, note_region);
  ASSERT_EQ(regions.size(), 3u);
  expect_region(regions[0], args, args.band0, 118, 2, 0, 8);
  expect_region(regions[1], args, args.pano, 118, 1, 4, 100);
  expect_region(regions[2], args, args.band1, 118, 3, 0, 10);
}

TEST(RemapMiddleStrip, FormatsBelowFourHalveTheChromaRows) {
  for (int format = 0; format < 8; ++format) {
    regions.clear();
    RemapThreadArgs args = numbered_args();
    args.format = format;
    remap_middle_strip(args, note_region);
    remap_edge_strip(args, note_region);
    for (const RemapRegion& region : regions) EXPECT_EQ(region.chroma_y_factor, format < 4 ? 2 : 1) << format;
  }
}

}  // namespace
}  // namespace biseam::test
