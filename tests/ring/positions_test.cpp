#include "ring/positions.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "camera/trigonometry.hpp"
#include "ring/mesh_fixture.hpp"
#include "ring/reference.hpp"
#include "support/cameras.hpp"
#include "support/hash.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

constexpr double kUsedBeyond = kLargestHalfWidth * kDegree;
constexpr double kBound = 0.005;  // pixels

constexpr PlaneGrid kLuma{};
constexpr PlaneGrid kLeft420{1, 1, 0, 1}, kMiddle420{1, 1, 1, 1}, kTopLeft420{1, 1, 0, 0}, kLeft422{1, 0, 0, 0};
constexpr PlaneGrid kGrids[] = {kLuma, kLeft420, kMiddle420, kTopLeft420, kLeft422};

// Both poles of the panorama in the middle of either lens and on the ring, and turns that mix everything.
std::vector<Turn> turns(RandomSource& random, int more) {
  std::vector<Turn> all = {{}, {0, 90, 0}, {0, -90, 0}, {90, 0, 0}, {0, 45, 0}, {0, 0, 90}, {0, 89.9, 30}};
  for (int i = 0; i < more; ++i) {
    all.push_back(
        {double(random.real_between(-180, 180)), double(random.real_between(-90, 90)), double(random.real_between(-180, 180))});
  }
  return all;
}

// The first and last rows and columns of blocks, and some between.
std::vector<Block> blocks(RandomSource& random, int width, int height, int between) {
  std::vector<Block> all;
  const auto add = [&](int x, int y) {
    all.push_back({x, y, std::min(kBlockWidth, width - x), std::min(kBlockHeight, height - y)});
  };
  const int last_x = (width - 1) / kBlockWidth * kBlockWidth, last_y = (height - 1) / kBlockHeight * kBlockHeight;
  for (const int y : {0, last_y}) {
    for (const int x : {0, last_x / 2 / kBlockWidth * kBlockWidth, last_x}) add(x, y);
  }
  for (int i = 0; i < between; ++i) {
    add(random.between(0, last_x / kBlockWidth) * kBlockWidth, random.between(0, last_y / kBlockHeight) * kBlockHeight);
  }
  return all;
}

struct Worst {
  double lens = 0, t = 0, b = 0;  // pixels of the plane, full turns
};

double luma_x(const Block& block, const PlaneGrid& grid, int i) { return block.x + (i << grid.bits_x) + grid.half_x / 2.0; }
double luma_y(const Block& block, const PlaneGrid& grid, int j) { return block.y + (j << grid.bits_y) + grid.half_y / 2.0; }

// The largest error of a lens's positions where it is used.
double lens_error(const OwnMesh& mesh, const Camera& camera, const View& view, int k, const Block& block,
                  const PlaneGrid& panorama, const PlaneGrid& picture) {
  BlockValues x, y;
  lens_positions(*mesh, k, block, panorama, picture, x.values, y.values);
  double worst = 0;
  for (int j = 0; j < block.height >> panorama.bits_y; ++j) {
    for (int i = 0; i < block.width >> panorama.bits_x; ++i) {
      const Vec3 d = reference_direction(view, luma_x(block, panorama, i), luma_y(block, panorama, j));
      const Place exact = reference_place(camera, k, d);
      const double beyond = reference_ring(d).b * (k == 0 ? 1 : -1);
      if (exact.angle > camera.lens[k].fov / 2 * kDegree || beyond > kUsedBeyond) continue;
      const double ex = (exact.x - picture.half_x / 2.0) / (1 << picture.bits_x);
      const double ey = (exact.y - picture.half_y / 2.0) / (1 << picture.bits_y);
      const int at = j * kBlockWidth + i;
      worst = std::max({worst, std::fabs(ex - x.values[at] / 65536.0), std::fabs(ey - y.values[at] / 65536.0)});
    }
  }
  return worst;
}

void add_ring_error(const OwnMesh& mesh, const View& view, const Block& block, Worst& worst) {
  BlockValues t, b;
  ring_positions(*mesh, block, kLuma, {0, block.width, block.height}, t, b);
  for (int j = 0; j < block.height; ++j) {
    for (int i = 0; i < block.width; ++i) {
      const RingPlace exact = reference_ring(reference_direction(view, block.x + i, block.y + j));
      if (std::fabs(exact.b) > kUsedBeyond) continue;
      const int at = j * kBlockWidth + i;
      const double turn = 1 << kTurnBits;
      worst.t = std::max(worst.t, std::fabs(std::remainder(t.values[at] / turn - exact.t / (2 * kPi), 1.0)));
      worst.b = std::max(worst.b, std::fabs(b.values[at] / turn - exact.b / (2 * kPi)));
    }
  }
}

Worst worst_of(const Camera& camera, int width, int height, int more_turns, int between) {
  RandomSource random;
  OwnMesh mesh(camera, width, height);
  Worst worst;
  for (const Turn& turn : turns(random, more_turns)) {
    mesh.build(turn);
    const View view{width, height, turn};
    for (const Block& block : blocks(random, width, height, between)) {
      for (int k = 0; k < 2; ++k) {
        const PlaneGrid& panorama = kGrids[random.between(0, 4)];
        const PlaneGrid& picture = kGrids[random.between(0, 4)];
        worst.lens = std::max(worst.lens, lens_error(mesh, camera, view, k, block, kLuma, kLuma));
        worst.lens = std::max(worst.lens, lens_error(mesh, camera, view, k, block, panorama, picture));
      }
      add_ring_error(mesh, view, block, worst);
    }
  }
  std::printf("%dx%d from %d: %.5f pixels, t %.2e, b %.2e turns\n", width, height, camera.lens[0].width, worst.lens, worst.t,
              worst.b);
  return worst;
}

void expect_exact(const Camera& camera, int width, int height, int more_turns = 4, int between = 12) {
  const Worst worst = worst_of(camera, width, height, more_turns, between);
  EXPECT_LE(worst.lens, kBound) << width << " from " << camera.lens[0].width;
  const double bound = 0.004 / width;  // turns: a thousandth of a sample of a strip of a quarter of the width
  EXPECT_LE(worst.t, bound);
  EXPECT_LE(worst.b, bound);
}

TEST(PositionsAccuracy, AreExactAtTheUsualSizes) {
  for (const int width : {1920, 3840, 7680}) {
    expect_exact(scaled_camera(city_square(), width / 2), width, width / 2, 6);
    expect_exact(scaled_camera(bent_pair(), width / 2), width, width / 2, 6);
  }
}

TEST(PositionsAccuracy, AreExactAtTheLimits) {
  for (const int side : {400, 3840, 8000}) {
    for (const auto& [width, height] :
         {std::pair{64, 32}, {66, 34}, {130, 64}, {640, 320}, {1922, 962}, {500, 4000}, {16384, 8192}}) {
      expect_exact(scaled_camera(bent_pair(), side), width, height, 1, 4);
    }
  }
}

TEST(PositionsAccuracy, AreExactForWideLenses) {
  Camera camera;
  camera.lens[0] = camera.lens[1] = usual_lens(3000, 3000, 280);
  camera.lens[0].turn = {30, 20, 10};
  expect_exact(camera, 3840, 1920);
  camera.lens[1].k[0] = 0.05;
  expect_exact(camera, 1920, 960);
}

TEST(PositionsAccuracy, AreExactFarBeyondRightAngles) {
  for (const int side : {600, 1198, 1405, 1480, 2457}) {
    Camera camera;
    camera.lens[0] = camera.lens[1] = usual_lens(side, side, 300);
    camera.lens[1].turn = {45, 20, 0};
    expect_exact(camera, 3840, 1920, 2, 40);
    expect_exact(scaled_camera(camera, 6 * side), 640, 320, 2, 10);
  }
}

// Blocks that begin and end anywhere give what whole blocks give.
TEST(Positions, BlocksMayLieAnywhere) {
  RandomSource random;
  OwnMesh mesh(city_square(), 1922, 962);
  mesh.build({33, -20, 5});
  for (const PlaneGrid& grid : kGrids) {
    for (int n = 0; n < 300; ++n) {
      const Block part{2 * random.between(0, 960), 2 * random.between(0, 480), 2 * random.between(1, 32),
                       2 * random.between(1, 16)};
      if (part.x + part.width > 1922 || part.y + part.height > 962) continue;
      const int at_x = 2 * random.between(0, part.width / 2 - 1), at_y = 2 * random.between(0, part.height / 2 - 1);
      BlockValues x, y, one_x, one_y;
      lens_positions(*mesh, n % 2, part, grid, grid, x.values, y.values);
      lens_positions(*mesh, n % 2, {part.x + at_x, part.y + at_y, 2, 2}, grid, grid, one_x.values, one_y.values);
      const int at = (at_y >> grid.bits_y) * kBlockWidth + (at_x >> grid.bits_x);
      ASSERT_EQ(x.values[at], one_x.values[0]);
      ASSERT_EQ(y.values[at], one_y.values[0]);
    }
  }
}

// Only the block's own places are written.
TEST(Positions, OtherPlacesStay) {
  OwnMesh mesh(city_square(), 640, 320);
  mesh.build({});
  for (const PlaneGrid& grid : kGrids) {
    for (const int width : {2, 14, 34, 62, 64}) {
      BlockValues x, y;
      std::memset(&x, 0x5A, sizeof x);
      std::memset(&y, 0x5A, sizeof y);
      lens_positions(*mesh, 0, {64, 32, width, 30}, grid, grid, x.values, y.values);
      for (int j = 0; j < kBlockHeight; ++j) {
        for (int i = 0; i < kBlockWidth; ++i) {
          if (i < width >> grid.bits_x && j < 30 >> grid.bits_y) continue;
          ASSERT_EQ(0x5A5A5A5A, x.values[j * kBlockWidth + i]);
          ASSERT_EQ(0x5A5A5A5A, y.values[j * kBlockWidth + i]);
        }
      }
    }
  }
}

// Beyond what a lens sees positions are anything, but not outside the integers that samplers take.
TEST(Positions, AreHeldEverywhere) {
  for (const int side : {960, 8000}) {
    OwnMesh mesh(scaled_camera(bent_pair(), side), 640, 320);
    for (const Turn& turn : {Turn{}, Turn{0, 90, 0}, Turn{100, -45, 77}}) {
      mesh.build(turn);
      for (int y = 0; y < 320; y += kBlockHeight) {
        for (int x = 0; x < 640; x += kBlockWidth) {
          BlockValues px, py;
          for (int k = 0; k < 2; ++k) {
            lens_positions(*mesh, k, {x, y, kBlockWidth, kBlockHeight}, kLuma, kLuma, px.values, py.values);
            for (int i = 0; i < kBlockWidth * kBlockHeight; ++i) {
              ASSERT_LE(std::abs(px.values[i]), (kFarthest + 1024) << kPositionBits);
              ASSERT_LE(std::abs(py.values[i]), (kFarthest + 1024) << kPositionBits);
            }
          }
        }
      }
    }
  }
}

TEST(Positions, HaveTheSameBitsOnEveryHost) {
  Hash hash;
  OwnMesh mesh(bent_pair(), 1922, 962);
  mesh.build({-77.5, 12.25, 163});
  for (const PlaneGrid& grid : kGrids) {
    for (int y = 0; y < 962; y += 6 * kBlockHeight) {
      for (int x = 0; x < 1922; x += 3 * kBlockWidth) {
        const Block block{x, y, std::min(kBlockWidth, 1922 - x), std::min(kBlockHeight, 962 - y)};
        BlockValues values[4];
        lens_positions(*mesh, 0, block, grid, kLeft420, values[0].values, values[1].values);
        ring_positions(*mesh, block, grid, {0, block.width >> grid.bits_x, block.height >> grid.bits_y}, values[2], values[3]);
        for (const BlockValues& v : values) {
          for (int j = 0; j < block.height >> grid.bits_y; ++j) {
            for (int i = 0; i < block.width >> grid.bits_x; ++i) hash.add(v.values[j * kBlockWidth + i]);
          }
        }
      }
    }
  }
  EXPECT_EQ(0xb3c03162fb1dd56au, hash.value());
}

}  // namespace
}  // namespace biseam::test
