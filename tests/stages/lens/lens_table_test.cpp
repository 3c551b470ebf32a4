#include "stages/lens/lens_table.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <mutex>

#include "biseam/biseam.h"
#include "stages/lens/plain_lens.hpp"
#include "support/guarded.hpp"

namespace biseam::test {
namespace {

constexpr double kExactPi = 3.141592653589793;

void expect_rows_as_defined(const LensRecord& lens, int width, const float* entries, int first_row, int end_row) {
  for (int row = first_row; row < end_row; ++row) {
    for (int column = 0; column < width; ++column) {
      const SourcePosition expected = plain_entry(lens, row, column);
      const float* entry = entries + (static_cast<std::size_t>(row) * width + column) * 2;
      ASSERT_EQ(std::memcmp(entry, &expected, sizeof expected), 0)
          << "row " << row << " column " << column << ": " << entry[0] << ", " << entry[1] << " for " << expected.u << ", "
          << expected.v;
    }
  }
}

// The three tables of an engine of its own, each in a guarded block of exactly rows x width entries.
struct Tables {
  Tables(const StitchConfig& config, int rows)
      : widths{plain_lens(config, 0).width, plain_lens(config, 1).width, plain_lens(config, 2).width},
        blocks{Guarded<float>(2 * rows * widths[0]), Guarded<float>(2 * rows * widths[1]),
               Guarded<float>(2 * rows * widths[2])} {
    engine.map_left.entries = blocks[0].data();
    engine.map_middle.entries = blocks[1].data();
    engine.map_right.entries = blocks[2].data();
  }

  int widths[3];
  Guarded<float> blocks[3];
  StitchEngine engine{};
};

void expect_tables_as_defined(const StitchConfig& config, Tables& tables, int rows) {
  for (int strip = 0; strip < 3; ++strip) {
    SCOPED_TRACE(testing::Message() << "strip " << strip);
    expect_rows_as_defined(plain_lens(config, strip), tables.widths[strip], tables.blocks[strip].data(), 0, rows);
    EXPECT_TRUE(tables.blocks[strip].guards_intact());
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(InitLut, EveryEntryEqualsThePlainFormula) {
  const struct {
    int width, height, feather;
  } sizes[] = {{64, 32, 4}, {66, 17, 3}, {70, 9, 0},   {37, 5, 1},   {256, 128, 8},
               {4, 2, 0},   {13, 1, 2},  {4446, 2, 5}, {18, 1030, 1}};  // the last two more than a tile
  for (const auto& size : sizes) {
    SCOPED_TRACE(testing::Message() << size.width << " x " << size.height << ", feather " << size.feather);
    StitchConfig config = lens_config(size.width, size.height, size.feather);
    Tables tables(config, size.height);
    EXPECT_EQ(Init_lut(&config, &tables.engine), 0);
    expect_tables_as_defined(config, tables, size.height);
  }
}

TEST(InitLut, RandomLensesEqualThePlainFormula) {
  const unsigned seed = 20501;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  for (int round = 0; round < 20; ++round) {
    StitchConfig config = lens_config(pick(random, 4, 200), pick(random, 1, 40), pick(random, 0, 9));
    config.p0 = pick(random, 1.0f, 900.0f);
    config.p1 = pick(random, 1.0f, 900.0f);
    config.change_focus = pick(random, 0.5f, 2.0f);
    for (float& entry : config.lens_matrix) entry = pick(random, -1.5f, 1.5f);
    Tables tables(config, config.in_h);
    Init_lut(&config, &tables.engine);
    expect_tables_as_defined(config, tables, config.in_h);
    if (HasFatalFailure()) return;
  }
}

TEST(InitLut, RepeatedRunsGiveTheSameTables) {
  StitchConfig config = lens_config(331, 77, 5);  // no strip is a multiple of four wide, and the middle is split unevenly
  Tables first(config, config.in_h);
  Init_lut(&config, &first.engine);
  for (int run = 0; run < 20; ++run) {
    Tables again(config, config.in_h);
    Init_lut(&config, &again.engine);
    for (int strip = 0; strip < 3; ++strip) {
      ASSERT_EQ(std::memcmp(first.blocks[strip].data(), again.blocks[strip].data(), first.blocks[strip].bytes()), 0);
      ASSERT_TRUE(again.blocks[strip].guards_intact());
    }
  }
}

TEST(InitLut, RowsPastTheCarvedTablesAreNotBuilt) {
  StitchConfig config = lens_config(50, 24, 2);
  config.in_h = 11;
  Tables tables(config, 11);
  Init_lut(&config, &tables.engine);
  expect_tables_as_defined(config, tables, 11);
}

TEST(InitLut, CarvedRowsPastThePanoramaStayAsTheyAre) {
  StitchConfig config = lens_config(50, 12, 2);
  config.in_h = 20;
  Tables tables(config, 20);
  Init_lut(&config, &tables.engine);
  expect_tables_as_defined(config, tables, 12);
  for (int strip = 0; strip < 3; ++strip) {
    EXPECT_TRUE(tables.blocks[strip].untouched(12 * 8 * tables.widths[strip], tables.blocks[strip].bytes()));
  }
}

TEST(InitLut, EmptySizesBuildNothing) {
  for (const auto& [width, height] : {std::pair{0, 8}, {8, 0}, {-8, 8}, {8, -8}}) {
    StitchConfig config = lens_config(width, height, 0);
    StitchEngine engine{};
    EXPECT_EQ(Init_lut(&config, &engine), 0);
  }
}

struct Build {
  int width, rows, part;
  const MAPTIHeader* map;
  LensRecord lens;
};
std::mutex builds_lock;
std::vector<Build> builds;

void note_build(const LutBuilderArgs& args) {
  const std::lock_guard lock(builds_lock);
  builds.push_back({args.width, args.rows, args.part, args.map, *args.lens});
}

TEST(BuildTables, HandsFourTasksToTheGivenBuilder) {
  builds.clear();
  const StitchConfig config = lens_config(66, 31, 3);
  StitchEngine engine{};
  build_tables(config, engine, note_build);
  const MAPTIHeader* maps[] = {&engine.map_left, &engine.map_middle, &engine.map_right};
  const struct { int strip, part; } expected[] = {{0, 0}, {1, 1}, {1, 2}, {2, 0}};
  ASSERT_EQ(builds.size(), 4u);
  for (const auto& [strip, part] : expected) {
    int found = 0;
    const LensRecord lens = plain_lens(config, strip);
    for (const Build& build : builds) {
      found += build.map == maps[strip] && build.part == part && build.rows == 31 && build.width == lens.width &&
               std::memcmp(&build.lens, &lens, sizeof lens) == 0;
    }
    EXPECT_EQ(found, 1) << "strip " << strip << ", part " << part;
  }
}

// One strip built by the exported thread entry, and the rows it should have filled.
void expect_part(int width, int rows, int part, int first_row, int end_row) {
  SCOPED_TRACE(testing::Message() << width << " x " << rows << ", part " << part);
  LensRecord lens = plain_lens(lens_config(4 * width, rows, 0), 1);
  Guarded<float> entries(2 * rows * width);
  MAPTIHeader map{entries.data()};
  LutBuilderArgs args{width, rows, &map, &lens, part};
  EXPECT_EQ(CreateLUTTablePht(&args), reinterpret_cast<void*>(1));
  expect_rows_as_defined(lens, width, entries.data(), first_row, end_row);
  EXPECT_TRUE(entries.guards_intact());
  EXPECT_TRUE(entries.untouched(0, first_row * 8 * width));
  EXPECT_TRUE(entries.untouched(end_row * 8 * width, entries.bytes()));
}

TEST(CreateLUTTablePht, PartZeroFillsEveryRow) { expect_part(20, 6, 0, 0, 6); }

TEST(CreateLUTTablePht, WithOddRowsTheSecondHalfHasOneMore) {
  expect_part(12, 7, 1, 0, 3);
  expect_part(12, 7, 2, 3, 7);
}

TEST(CreateLUTTablePht, EmptyHalfWritesNothing) {
  expect_part(12, 1, 1, 0, 0);
  expect_part(12, 1, 2, 0, 1);
}

TEST(CreateLUTTablePht, WidthsThatAreNoMultipleOfFourStayInsideTheirRows) {
  for (int width = 1; width <= 13; ++width) expect_part(width, 3, 0, 0, 3);
}

TEST(CreateLUTTablePht, FirstRowIsOneStepBelowThePole) {
  LensRecord lens = plain_lens(lens_config(64, 16, 0), 0);
  lens.cx = lens.cy = 0.0f;
  std::vector<float> entries(2 * 16 * 16);
  MAPTIHeader map{entries.data()};
  LutBuilderArgs args{16, 16, &map, &lens, 0};
  CreateLUTTablePht(&args);
  // The last column looks a quarter turn to the right: only the step of pi / 16 away from the pole leads there.
  const float* entry = &entries[2 * 15];
  const double length = lens.focal * lens.focus * kExactPi / 2;
  EXPECT_NEAR(entry[0], length * std::sin(kExactPi / 16), 3.0);
  EXPECT_NEAR(entry[1], -length * std::cos(kExactPi / 16), 3.0);
}

TEST(CreateLUTTablePht, LastRowLooksAtThePole) {
  LensRecord lens = plain_lens(lens_config(64, 16, 0), 0);
  lens.cx = lens.cy = 0.0f;
  std::vector<float> entries(2 * 16 * 16);
  MAPTIHeader map{entries.data()};
  LutBuilderArgs args{16, 16, &map, &lens, 0};
  CreateLUTTablePht(&args);
  for (int column = 0; column < 16; ++column) {
    const float* entry = &entries[2 * (15 * 16 + column)];
    EXPECT_NEAR(entry[0], 0.0, 1e-3);
    EXPECT_NEAR(entry[1], lens.focal * lens.focus * kExactPi / 2, 3.0);  // a quarter turn below the axis
  }
}

TEST(CreateLUTTablePht, IdentityMatrixPointsAlongTheRayWithTheAnglesLength) {
  const StitchConfig config = lens_config(256, 128, 8);
  LensRecord lens = plain_lens(config, 0);
  lens.cx = lens.cy = 0.0f;
  std::vector<float> entries(2 * lens.width * lens.rows);
  MAPTIHeader map{entries.data()};
  LutBuilderArgs args{lens.width, lens.rows, &map, &lens, 0};
  CreateLUTTablePht(&args);
  for (int row = 0; row < lens.rows - 1; ++row) {
    for (int column = 0; column < lens.width; ++column) {
      const double theta = -kExactPi / 2 + (row + 1) * kExactPi / 128, phi = (column + 1) * 2 * kExactPi / 256;
      const double x = std::sin(phi) * std::cos(theta), y = std::sin(theta), z = std::cos(phi) * std::cos(theta);
      const double length = lens.focal * lens.focus * std::atan2(std::hypot(x, y), z);
      const double u = entries[2 * (row * lens.width + column)], v = entries[2 * (row * lens.width + column) + 1];
      // Eight-bit estimates and the fast sine: about one in a hundred.
      ASSERT_NEAR(std::hypot(u, v), length, 0.012 * length + 1.0) << row << ", " << column;
      ASSERT_NEAR(u * y - v * x, 0.0, 0.003 * length) << row << ", " << column;
      ASSERT_GE(u * x + v * y, 0.0) << row << ", " << column;
    }
  }
}

// Against the same formula with divisions and a square root: one Newton step would come within 0.0001.
TEST(CreateLUTTablePht, EstimatesAreNotRefined) {
  LensRecord lens = plain_lens(lens_config(256, 128, 0), 0);
  lens.cx = lens.cy = 0.0f;
  std::vector<float> entries(2 * lens.width * lens.rows);
  MAPTIHeader map{entries.data()};
  LutBuilderArgs args{lens.width, lens.rows, &map, &lens, 0};
  CreateLUTTablePht(&args);
  double most = 0.0;
  for (int row = 0; row < lens.rows - 1; ++row) {
    for (int column = 0; column < lens.width; ++column) {
      const double theta = -kExactPi / 2 + (row + 1) * kExactPi / 128, phi = (column + 1) * 2 * kExactPi / 256;
      const double x = plain_sine(phi) * std::cos(theta), y = std::sin(theta);
      const double z = plain_cosine(phi) * std::cos(theta);
      double angle = plain_arctangent(static_cast<float>(std::hypot(x, y) / z), 1.0f);
      if (angle < 0.0) angle += kExactPi;
      const float* entry = &entries[2 * (row * lens.width + column)];
      most = std::max(most, std::fabs(std::hypot(entry[0], entry[1]) / (lens.focal * lens.focus * angle) - 1.0));
    }
  }
  EXPECT_GT(most, 0.002);
}

TEST(CreateLUTTablePht, ThirdMatrixRowIsNotRead) {
  LensRecord lens = plain_lens(lens_config(64, 8, 2), 1);
  Guarded<float> first(2 * 36 * 8), second(2 * 36 * 8);
  MAPTIHeader map{first.data()};
  LutBuilderArgs args{36, 8, &map, &lens, 0};
  CreateLUTTablePht(&args);
  for (int i = 6; i < 9; ++i) lens.matrix[i] = std::nanf("");
  map.entries = second.data();
  CreateLUTTablePht(&args);
  EXPECT_EQ(std::memcmp(first.data(), second.data(), first.bytes()), 0);
}

TEST(CreateLUTTablePht, EntryExactlyOnTheAxisIsTheDefaultNanOnEveryHost) {
  LensRecord lens = plain_lens(lens_config(64, 256, 0), 0);
  lens.column_offset = 1.5707964f - lens.column_step;  // column 0 and row 127: both angles zero to the last bit
  std::vector<float> entries(2 * 16 * 256);
  MAPTIHeader map{entries.data()};
  LutBuilderArgs args{16, 256, &map, &lens, 0};
  CreateLUTTablePht(&args);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(std::bit_cast<uint32_t>(entries[2 * 127 * 16 + i]), 0x7FC00000u);
}

TEST(FreeMAPTIHeader, FreesAndClears) {
  MAPTIHeader map{static_cast<float*>(std::malloc(64))};
  FreeMAPTIHeader(&map);
  EXPECT_EQ(map.entries, nullptr);
  FreeMAPTIHeader(&map);
}

}  // namespace
}  // namespace biseam::test
