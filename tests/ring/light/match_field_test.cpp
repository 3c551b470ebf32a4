#include "ring/light/match_field.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "ring/mesh_fixture.hpp"
#include "support/cameras.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

constexpr StripShape kStrip{480, 28};

std::unique_ptr<MatchField> planned(StripShape strip) {
  auto field = std::make_unique<MatchField>();
  plan_match_field(strip, *field);
  return field;
}

std::unique_ptr<MatchField> filled(const LightModel& model, const Tone& tone) {
  auto field = planned(kStrip);
  fill_match_field(model, tone, kStrip, *field);
  return field;
}

// Strip samples from the ring's middle.
double across_of(const MatchField& field, int column, StripShape strip) {
  return double((column - field.before) * (1 << field.bits)) - 0.5 * (strip.width - 1);
}

// Of a lens: half of the difference in logarithms, up or down.
double factor_of(int lens, double log) { return std::exp2((lens == 0 ? 0.5 : -0.5) * log / kLogOne); }
double gain_of(int lens, double log) { return kMatchOne * (factor_of(lens, log) - 1); }

// Columns a few degrees apart reach from one lens's axis to the other's, and not past them.
TEST(MatchField, ReachesFromAxisToAxis) {
  RandomSource random;
  for (int round = 0; round < 300; ++round) {
    const int length = 16 * random.between(4, kMaxStripLength / 16);
    const StripShape strip{length, random.between(kMinStripWidth, std::max(kMinStripWidth, length * 21 / 360))};
    const std::unique_ptr<MatchField> field = planned(strip);
    const double degrees = 360.0 / length;
    EXPECT_TRUE(field->bits == 0 || degrees * (1 << field->bits) <= 3.2 + 1e-9) << length;
    EXPECT_GT(degrees * (2 << field->bits), 3.2 - 1e-9) << length;
    const double quarter = 0.25 * length, pitch = 1 << field->bits;
    EXPECT_LE(across_of(*field, 0, strip), -quarter) << length;
    EXPECT_GT(across_of(*field, 1, strip), -quarter) << length;
    EXPECT_GE(across_of(*field, field->columns - 1, strip), quarter) << length;
    EXPECT_LT(across_of(*field, field->columns - 1, strip), quarter + 3 * pitch) << length;
    EXPECT_LE(field->columns, MatchField::kMostColumns) << length;
  }
}

TEST(MatchField, EachLensTakesHalfOfTheDifference) {
  for (const double log : {-0.9, -0.2, 0.0, 0.31, 1.2}) {
    const double whole = log * kLogOne;
    const auto field = filled({{whole, whole, whole}, {}, 0}, make_tone(Transfer::bt709, false, false));
    for (int lens = 0; lens < 2; ++lens) {
      for (int row = 0; row < MatchField::kRows; ++row) {
        for (int column = 0; column < field->columns; ++column) {
          for (const int v : {first_gain, second_gain, third_gain}) {
            ASSERT_NEAR(field->places[lens][row][column].values[v], gain_of(lens, whole), 0.51);
          }
          for (const int v : {first_tint, second_tint}) ASSERT_EQ(field->places[lens][row][column].values[v], 0);
        }
      }
    }
  }
}

TEST(MatchField, NoLensIsChangedByMoreThanSevenTenthsOfAStepOfLog2) {
  for (const double sign : {-1.0, 1.0}) {
    const double whole = sign * 9 * kLogOne;
    const auto field = filled({{whole, whole, whole}, {}, 0}, make_tone(Transfer::bt709, false, false));
    for (int lens = 0; lens < 2; ++lens) {
      EXPECT_NEAR(field->places[lens][0][0].values[first_gain], gain_of(lens, sign * 1.4 * kLogOne), 0.51);
    }
  }
}

// Three planes of anything are green, blue and red; models know red, green and blue.  Sectors' values stand in their middles,
// and in the ring nothing is faded.
TEST(MatchField, GoesThroughTheSectors) {
  RandomSource random;
  LightModel model{};
  for (double& whole : model.whole) whole = random.between(-1000, 1000);
  for (auto& sector : model.rest) {
    for (double& rest : sector) rest = random.between(-600, 600);
  }
  const auto field = filled(model, make_tone(Transfer::usual, true, true));
  constexpr int kChannelOf[3] = {1, 2, 0};
  for (int sector = 0; sector < kSectors; ++sector) {
    const int row = (2 * sector + 1) * MatchField::kRows / (2 * kSectors);
    for (int column = field->before; column <= field->before + ((kStrip.width - 1) >> field->bits); ++column) {
      for (int lens = 0; lens < 2; ++lens) {
        for (int v = 0; v < 3; ++v) {
          const int c = kChannelOf[v];
          EXPECT_NEAR(field->places[lens][row][column].values[v], gain_of(lens, model.whole[c] + model.rest[sector][c]), 0.51);
        }
      }
    }
  }
}

// Log of what a lens is brightened by in a column, by its gain.
double brightened(const MatchField& field, int lens, int row, int column) {
  return kLogOne * std::log2(1 + double(field.places[lens][row][column].values[first_gain]) / kMatchOne);
}
constexpr double kLogRounding = 0.6 * kLogOne / kMatchOne / 0.6931;

// As that of two equal lenses, by the square of the angle to the axis: what they are brightened by differs by the slope, and
// away from the ring there is less and less of it.
TEST(MatchField, FalloffIsUndoneFromAxisToRim) {
  for (const double slope : {0.5, 2.0, 4.0}) {
    const auto field = filled({{}, {}, slope}, make_tone(Transfer::bt709, false, false));
    const double quarter = kStrip.length / 4.0;
    for (int column = 0; column < field->columns; ++column) {
      const double across = across_of(*field, column, kStrip);
      for (int lens = 0; lens < 2; ++lens) {
        const double angle = std::max(0.0, quarter + (lens == 0 ? across : -across));
        for (const int row : {0, 31, 63}) {
          EXPECT_NEAR(brightened(*field, lens, row, column), slope * angle * angle / (4 * quarter), kLogRounding) << across;
        }
      }
      if (std::abs(across) > quarter) continue;
      const double more = brightened(*field, 0, 0, column) - brightened(*field, 1, 0, column);
      EXPECT_NEAR(more, slope * across, 2 * kLogRounding);
    }
  }
}

// Of lenses that become dark in a few degrees nobody knows how dark they are: what is steeper than 0.07 of log2 at right angles
// to the axis is undone at the rims alone, so that each lens still shows what the other one does.
TEST(MatchField, SteepFalloffIsTheRimsOwn) {
  constexpr double kMost = 0.07 * kLogOne;
  for (const double slope : {20.0, 60.0}) {
    const auto field = filled({{}, {}, slope}, make_tone(Transfer::bt709, false, false));
    const double quarter = kStrip.length / 4.0;
    for (int column = 0; column < field->columns; ++column) {
      const double across = across_of(*field, column, kStrip);
      if (std::abs(across) > quarter) continue;
      const int rim = across > 0 ? 0 : 1;
      const double inwards = 1 - std::abs(across) / quarter;
      EXPECT_NEAR(brightened(*field, 1 - rim, 0, column), kMost * inwards * inwards, kLogRounding) << across;
      if (2 * std::abs(across) > kStrip.width - 1) continue;
      const double more = brightened(*field, rim, 0, column) - brightened(*field, 1 - rim, 0, column);
      EXPECT_NEAR(more, slope * std::abs(across), 2 * kLogRounding) << across;
    }
  }
}

// No falloff makes a rim brighter: that is light of another kind, which changes nothing away from the rims.
TEST(MatchField, BrightRimsAreDarkenedAlone) {
  const auto field = filled({{}, {}, -12}, make_tone(Transfer::bt709, false, false));
  for (int column = 0; column < field->columns; ++column) {
    const double across = across_of(*field, column, kStrip);
    const int rim = across > 0 ? 0 : 1;
    EXPECT_EQ(field->places[1 - rim][0][column].values[first_gain], 0) << across;
    if (2 * std::abs(across) > kStrip.width - 1) continue;
    EXPECT_NEAR(field->places[rim][0][column].values[first_gain], gain_of(0, -24 * std::abs(across)), 0.51) << across;
  }
}

// One wave round the ring, of which 16 places are known, is met between them, and where the ring begins again.
TEST(MatchField, IsSmoothRoundTheRing) {
  constexpr double kHeight = 1000;
  LightModel model{};
  const auto wave = [](double turn) { return kHeight * std::cos(2 * kPi * (turn - 0.1)); };
  for (int s = 0; s < kSectors; ++s) std::fill_n(model.rest[s], 3, wave((s + 0.5) / kSectors));
  const auto field = filled(model, make_tone(Transfer::bt709, false, false));
  for (int row = 0; row < MatchField::kRows; ++row) {
    const double factor = 1 + double(field->places[0][row][field->before].values[first_gain]) / kMatchOne;
    EXPECT_NEAR(2 * kLogOne * std::log2(factor), wave(double(row) / MatchField::kRows), 0.01 * kHeight) << row;
  }
}

TEST(MatchField, FadesToTheWholeLens) {
  LightModel model{};
  std::fill_n(model.whole, 3, 800.0);
  for (auto& sector : model.rest) std::fill_n(sector, 3, -700.0);
  const auto field = filled(model, make_tone(Transfer::bt709, false, false));
  const double edge = 0.5 * (kStrip.width - 1), fading = 20.0 / 360 * kStrip.length;
  int on_the_way = 0;
  for (int column = 0; column < field->columns; ++column) {
    const double beyond = std::abs(across_of(*field, column, kStrip)) - edge, u = std::clamp(beyond / fading, 0.0, 1.0);
    const double left = u < 0.5 ? 1 - 3 * u * u + 2 * u * u * u : (1 - u) * (1 - u) * (1 + 2 * u);
    EXPECT_NEAR(field->places[1][7][column].values[first_gain], gain_of(1, 800 - 700 * left), 0.51) << column;
    on_the_way += u > 0 && u < 1;
  }
  EXPECT_GE(on_the_way, 8);
}

// A change of red, green and blue is a matrix between luma and chroma; what it does to each of them is its diagonal.
TEST(MatchField, ChromaIsMultipliedAsTheColoursAre) {
  constexpr double kR = 0.2126, kG = 0.7152, kB = 0.0722;
  const LightModel model{{700, 100, -400}, {}, 0};
  const auto field = filled(model, make_tone(Transfer::bt709, false, true));
  for (int lens = 0; lens < 2; ++lens) {
    const auto after = [&](double y, double cb, double cr) {
      const double r = y + 2 * (1 - kR) * cr, b = y + 2 * (1 - kB) * cb, g = (y - kR * r - kB * b) / kG;
      const double changed[3] = {r * factor_of(lens, 700), g * factor_of(lens, 100), b * factor_of(lens, -400)};
      const double luma = kR * changed[0] + kG * changed[1] + kB * changed[2];
      return std::vector<double>{luma, (changed[2] - luma) / (2 * (1 - kB)), (changed[0] - luma) / (2 * (1 - kR))};
    };
    EXPECT_NEAR(field->places[lens][5][5].values[first_gain], kMatchOne * (after(1, 0, 0)[0] - 1), 0.51);
    EXPECT_NEAR(field->places[lens][5][5].values[second_gain], kMatchOne * (after(0, 1, 0)[1] - 1), 0.51);
    EXPECT_NEAR(field->places[lens][5][5].values[third_gain], kMatchOne * (after(0, 0, 1)[2] - 1), 0.51);
  }
}

// What a gray becomes that is shown in the middle of the range, 0.45 of it above black: codes go along lines through the pivot,
// each colour along its own, and the chroma that comes of it is the tint's share of luma.
TEST(MatchField, TintsGraysAsTheColoursAre) {
  constexpr double kR = 0.2126, kG = 0.7152, kB = 0.0722;
  const LightModel model{{500, 60, -300}, {}, 0};
  for (const bool full_range : {false, true}) {
    const Tone tone = make_tone(Transfer::bt709, false, full_range);
    const auto field = filled(model, tone);
    for (int lens = 0; lens < 2; ++lens) {
      const double red = factor_of(lens, 500), green = factor_of(lens, 60), blue = factor_of(lens, -300);
      const double shown = 0.45 * (tone.white - tone.black), luma = kR * red + kG * green + kB * blue;
      const double above_pivot = (shown + tone.black - tone.pivot) / luma;
      const double scale = full_range ? 1 : 224.0 / 219;
      const double cb = scale * (blue - luma) * above_pivot / (2 * (1 - kB)),
                   cr = scale * (red - luma) * above_pivot / (2 * (1 - kR));
      const double rounding = 0.51 * shown / kMatchOne;
      EXPECT_NEAR(field->places[lens][9][4].values[first_tint] * shown / kMatchOne, cb, rounding);
      EXPECT_NEAR(field->places[lens][9][4].values[second_tint] * shown / kMatchOne, cr, rounding);
    }
  }
}

// ---- Between its places ------------------------------------------------------------------------------------------------

constexpr int kMostValue = 1000;

std::unique_ptr<MatchField> random_field(StripShape strip, RandomSource& random) {
  auto field = planned(strip);
  for (auto& lens : field->places) {
    for (auto& row : lens) {
      for (MatchPlace& place : row) {
        for (int16_t& value : place.values) value = static_cast<int16_t>(random.between(-kMostValue, kMostValue));
      }
    }
  }
  return field;
}

double between_places(const MatchField& field, int lens, int v, double row, double column) {
  const int r = int(row), c = int(column), next = (r + 1) % MatchField::kRows;
  const double down = row - r, across = column - c;
  const auto at = [&](int of_row, int of_column) { return field.places[lens][of_row][of_column].values[v]; };
  return (1 - down) * ((1 - across) * at(r, c) + across * at(r, c + 1)) +
         down * ((1 - across) * at(next, c) + across * at(next, c + 1));
}

// Rounded halfway, too.
TEST(MatchField, StripRowsAreLinearBetweenItsPlaces) {
  RandomSource random;
  for (const StripShape strip : {StripShape{512, 29}, StripShape{1024, 48}, StripShape{64, 5}}) {
    const auto field = random_field(strip, random);
    auto places = std::make_unique<MatchStripRow>();
    std::vector<int16_t> values(std::size_t(strip.width));
    for (int t = 0; t < strip.length; ++t) {
      const int lens = random.between(0, 1), v = random.between(0, kMatchValues - 1);
      match_strip_row(*field, strip, lens, t, *places);
      const double row = double(t) * MatchField::kRows / strip.length;
      match_strip_values(*field, strip, *places, v, values.data());
      for (int b = 0; b < strip.width; ++b) {
        const double column = field->before + double(b) / (1 << field->bits);
        ASSERT_NEAR(values[std::size_t(b)], between_places(*field, lens, v, row, column), 1.01) << t << " " << b;
      }
    }
  }
}

// At each node's angles, up to the axes.  Places are cut off to 1/256 of a row and, twice, of a column.
TEST(MatchNodes, HaveTheValuesOfTheirAngles) {
  RandomSource random;
  const StripShape strip{480, 28};
  const auto field = random_field(strip, random);
  OwnMesh mesh(scaled_camera(city_square(), 480), 256, 128);
  mesh.build({20, 10, -5});
  const std::size_t count = node_count(mesh->shape);
  ASSERT_EQ(match_node_bytes(mesh->shape), 2 * count * sizeof(MatchPlace));
  std::vector<MatchPlace> block(2 * count);
  const MatchNodes nodes = carve_match_nodes(mesh->shape, block.data());
  ASSERT_EQ(nodes.places[0], block.data());
  ASSERT_EQ(nodes.places[1], block.data() + count);
  for (int row = 0; row < mesh->shape.rows; ++row) fill_match_nodes(*field, strip, *mesh, row, nodes);
  constexpr double kRounding = 0.51 + 3 * 2 * kMostValue / 256.0;
  int in_ring = 0, far = 0;
  for (std::size_t i = 0; i < node_count(mesh->shape); ++i) {
    const double turns = mesh->t.values[i] / double(1 << kTurnBits), across = mesh->b.values[i] / double(1 << kTurnBits);
    const double sample = across * strip.length + 0.5 * (strip.width - 1);
    const double column = field->before + sample / (1 << field->bits);
    ASSERT_GE(column, 0);
    ASSERT_LT(column, field->columns - 1);
    in_ring += sample >= 0 && sample <= strip.width - 1;
    far += std::abs(across) > 0.15;
    const double row = (turns - std::floor(turns)) * MatchField::kRows;
    for (int lens = 0; lens < 2; ++lens) {
      for (int v = 0; v < kMatchValues; ++v) {
        ASSERT_NEAR(nodes.places[lens][i].values[v], between_places(*field, lens, v, row, column), kRounding)
            << turns << " " << across;
      }
    }
  }
  EXPECT_GT(in_ring, 100);
  EXPECT_GT(far, 100);
}

}  // namespace
}  // namespace biseam::test
