#include "ring/anchors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "ring/mesh_fixture.hpp"
#include "ring/reference.hpp"
#include "ring/ring_shape.hpp"
#include "support/cameras.hpp"
#include "support/guarded_block.hpp"
#include "support/isas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using ring::AnchorBand;
using ring::AnchorPlaces;
using ring::Block;
using ring::PlaneGrid;
using ring::StripShape;

// ---- Places ------------------------------------------------------------------------------------------------------------

TEST(Anchors, SurroundTheSamplesOfABlock) {
  for (const int columns : {1, 4, 5, 32, 63, 64}) {
    const ring::AnchorCount count = ring::anchors_around(columns, columns / 2);
    EXPECT_GE((count.columns - 1) * 4, columns);
    EXPECT_LT((count.columns - 2) * 4, columns);
    EXPECT_LE(count.columns, ring::kAnchorColumns);
    EXPECT_LE(count.rows, ring::kAnchorRows);
  }
}

TEST(Anchors, LieWhereTheirDirectionsAreOnTheStrip) {
  const Camera camera = city_square();
  const View view = {640, 320, {33, 21, 12}};
  const StripShape shape = ring::ring_shape(camera, view.width).strip;
  OwnMesh mesh(camera, view.width, view.height);
  mesh.build(view.turn);
  int compared = 0;
  for (const PlaneGrid& grid : {PlaneGrid{}, PlaneGrid{1, 1, 0, 1}, PlaneGrid{1, 0, 1, 0}}) {
    for (int y = 0; y < view.height; y += 32) {
      for (int x = 0; x < view.width; x += 64) {
        AnchorPlaces places;
        ring::place_anchors(*mesh, {x, y, 64, 32}, grid, shape, places);
        for (int j = 0; j < places.count.rows; ++j) {
          for (int i = 0; i < places.count.columns; ++i) {
            const double luma_x = x + (4 * i << grid.bits_x) + 0.5 * grid.half_x;
            const double luma_y = y + (4 * j << grid.bits_y) + 0.5 * grid.half_y;
            const RingPlace at = reference_ring(reference_direction(view, luma_x, luma_y));
            if (std::abs(at.b) > 0.3) continue;  // beyond any ring
            const double unit = shape.length / (2 * kPi);
            const double off =
                std::remainder(places.t.values[j * places.count.columns + i] / 65536.0 - at.t * unit, shape.length);
            // The mesh's 0.005 pixels of a lens with 280 of them to the radian, on a strip of 25 samples to the radian.
            ASSERT_LE(std::abs(off), 0.01) << luma_x << ", " << luma_y;
            ASSERT_NEAR(places.b.values[j * places.count.columns + i] / 65536.0, at.b * unit + 0.5 * (shape.width - 1), 0.01);
            ASSERT_GE(places.t.values[j * places.count.columns + i], 0);
            ASSERT_LT(places.t.values[j * places.count.columns + i], shape.length << 16);
            ++compared;
          }
        }
      }
    }
  }
  EXPECT_GT(compared, 4000);
}

// ---- Bands -------------------------------------------------------------------------------------------------------------

// Places anywhere on a strip.
AnchorPlaces random_places(RandomSource& random, StripShape shape) {
  AnchorPlaces places;
  places.count = {ring::kAnchorColumns, ring::kAnchorRows};
  for (int j = 0; j < ring::kAnchorRows; ++j) {
    for (int i = 0; i < ring::kAnchorColumns; ++i) {
      places.t.values[j * places.count.columns + i] = random.between(0, (shape.length << 16) - 1);
      places.b.values[j * places.count.columns + i] = random.between(-(3 << 16), (shape.width + 3) << 16);
    }
  }
  return places;
}

// Between four anchors a sample is their mean by distance, rounded half up.
template <class Value>
void expect_bilinear(const AnchorBand& band, const Value& value) {
  for (int y = 0; y < ring::kBlockHeight; ++y) {
    GuardedBlock<int32_t> row(ring::kBlockWidth);
    ring::row_of_band(band, y, row.data(), ring::kBlockWidth);
    for (int x = 0; x < ring::kBlockWidth; ++x) {
      const int i = x / 4, j = y / 4;
      const double u = x % 4 / 4.0, v = y % 4 / 4.0;
      const double mean =
          (1 - v) * ((1 - u) * value(j, i) + u * value(j, i + 1)) + v * ((1 - u) * value(j + 1, i) + u * value(j + 1, i + 1));
      ASSERT_EQ(row[std::size_t(x)], std::floor(mean + 0.5)) << x << ", " << y;
    }
  }
}

constexpr StripShape kShape = {96, 17};

TEST(Anchors, CorrectionsAreMeansOfThoseOfFourAnchors) {
  RandomSource random;
  std::vector<int16_t> strip(std::size_t(ring::strip_samples(kShape)));
  for (int16_t& s : strip) s = int16_t(random.between(-16383, 16383));
  const AnchorPlaces places = random_places(random, kShape);
  int32_t at_anchors[ring::kAnchorRows][ring::kAnchorColumns];
  ring::kLookUpCorrections.best()(strip.data(), kShape, places.t.values, places.b.values, at_anchors[0], places.count.all());
  AnchorBand band;
  ring::look_up_corrections(strip.data(), kShape, places, band);
  expect_bilinear(band, [&](int j, int i) { return double(at_anchors[j][i]); });
}

TEST(Anchors, DistancesAreThoseFromTheSeam) {
  RandomSource random;
  std::vector<int32_t> path(std::size_t(kShape.length) + 1);
  for (int32_t& p : path) p = random.between(4 << 16, 12 << 16);
  path.back() = path.front();
  const AnchorPlaces places = random_places(random, kShape);
  AnchorBand band;
  const ring::DistanceRange range = ring::look_up_distances({path.data(), kShape.length, 1 << 17}, places, band);
  for (int j = 0; j < ring::kAnchorRows; ++j) {
    for (int i = 0; i < ring::kAnchorColumns - 1; ++i) {
      const int32_t t = places.t.values[j * places.count.columns + i];
      const std::size_t row = std::size_t(t >> 16);
      const double seam = path[row] + (path[row + 1] - path[row]) * ((t & 0xffff) / 65536.0);
      ASSERT_NEAR(band.values[j][4 * i] / 4.0, places.b.values[j * places.count.columns + i] - seam, 1);
      ASSERT_LE(4 * range.least, band.values[j][4 * i]);
      ASSERT_GE(4 * range.largest, band.values[j][4 * i]);
    }
  }
  expect_bilinear(band, [&](int j, int i) {
    return i < ring::kAnchorColumns - 1
               ? band.values[j][4 * i] / 4.0
               : (4.0 * band.values[j][4 * i - 1] - band.values[j][4 * i - 4]) / 12.0;  // the line goes on to the last anchor
  });
}

// ---- Loops -------------------------------------------------------------------------------------------------------------

class AnchorLoops : public testing::TestWithParam<Isa> {
 protected:
  RandomSource random_;
};

TEST_P(AnchorLoops, FillRowsInBetween) {
  const auto fill = ring::kFillAnchorRow.of(GetParam());
  if (fill == nullptr) GTEST_SKIP() << "no version of its own";
  for (int count = 1; count <= 16; ++count) {
    std::vector<int32_t> anchors(std::size_t(count) + 1);
    for (int32_t& a : anchors) a = random_.between(-(1 << 24), 1 << 24);
    GuardedBlock<int32_t> out(std::size_t(count) * 4);
    fill(anchors.data(), out.data(), count);
    for (std::size_t i = 0; i < out.size(); ++i) {
      const int right = int(i % 4);
      ASSERT_EQ(out[i], (4 - right) * anchors[i / 4] + right * anchors[i / 4 + 1]);
    }
  }
}

TEST_P(AnchorLoops, MixRows) {
  const auto mix = ring::kMixAnchorRows.of(GetParam());
  if (mix == nullptr) GTEST_SKIP() << "no version of its own";
  for (const int count : {1, 7, 8, 16, 31, 33, 64}) {
    for (int below = 0; below < 4; ++below) {
      std::vector<int32_t> upper(static_cast<std::size_t>(count)), lower = upper;
      for (int32_t& v : upper) v = 4 * random_.between(-(1 << 24), 1 << 24);
      for (int32_t& v : lower) v = 4 * random_.between(-(1 << 24), 1 << 24) + random_.between(-3, 3);
      GuardedBlock<int32_t> out(static_cast<std::size_t>(count));
      mix(upper.data(), lower.data(), below, out.data(), count);
      for (std::size_t i = 0; i < out.size(); ++i) {
        const double mean = (upper[i] * (4.0 - below) + lower[i] * double(below)) / 16;
        ASSERT_EQ(out[i], std::floor(mean + 0.5));
      }
    }
  }
}

// Of columns of which few are near the other lens's side.
TEST_P(AnchorLoops, FindColumnsThatALensIsNeededFor) {
  const auto find = ring::kFindNeededColumns.of(GetParam());
  if (find == nullptr) GTEST_SKIP() << "no version of its own";
  for (int round = 0; round < 400; ++round) {
    const int columns = random_.between(0, 1) == 0 ? 64 : random_.between(1, 64), rows = random_.between(1, 5);
    const int reach = random_.between(1, 1000), side = random_.between(0, 1) == 0 ? 1 : -1;
    std::vector<int32_t> distances(std::size_t((rows - 1) * ring::kBlockWidth + columns), side * (reach + 5));
    for (int n = random_.between(0, 6); n > 0; --n) {
      const int at = random_.between(0, rows - 1) * ring::kBlockWidth + random_.between(0, columns - 1);
      distances[std::size_t(at)] = random_.between(-2 * reach, 2 * reach);
    }
    ring::ColumnRange got[2];
    find(distances.data(), rows, columns, reach, got);
    for (int lens = 0; lens < 2; ++lens) {
      int first = columns, end = columns;
      for (int column = 0; column < columns; ++column) {
        bool needed = false;
        for (int row = 0; row < rows; ++row) {
          const int32_t distance = distances[std::size_t(row * ring::kBlockWidth + column)];
          needed = needed || (lens == 0 ? distance < reach : distance > -reach);
        }
        if (!needed) continue;
        if (first == columns) first = column / 16 * 16;
        end = std::min(column / 16 * 16 + 16, columns);
      }
      ASSERT_EQ(got[lens].first, first) << lens << ", " << columns;
      ASSERT_EQ(got[lens].end, end) << lens << ", " << columns;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Isas, AnchorLoops, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
