#include "ring/blocks.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "ring/mesh_fixture.hpp"
#include "ring/reference.hpp"
#include "ring/ring_shape.hpp"
#include "support/cameras.hpp"

namespace biseam::test {
namespace {

using ring::BlockKind;
using ring::BlockPlan;
using ring::PlaneGrid;

constexpr Turn kTurns[] = {{0, 0, 0}, {33, 21, 12}, {0, 90, 0}, {-170, -62, 45}};
constexpr PlaneGrid kHalved = {1, 1, 0, 1};

// Those of usual shape, and flat ones.
constexpr View kViews[] = {{1280, 640, kTurns[0]},  {1280, 640, kTurns[1]}, {1280, 640, kTurns[2]}, {1280, 640, kTurns[3]},
                           {16384, 256, kTurns[1]}, {8192, 512, kTurns[2]}, {8192, 512, kTurns[3]}, {640, 1280, kTurns[3]}};

struct Plans {
  std::vector<BlockPlan> plans;
  int lens_blocks;
  int32_t half_width;

  Plans(const Camera& camera, const View& view, const PlaneGrid& chroma)
      : plans(std::size_t(ring::block_count(view.width, view.height))) {
    OwnMesh mesh(camera, view.width, view.height);
    mesh.build(view.turn);
    half_width = ring::ring_shape(camera, view.width).half_width;
    lens_blocks = ring::plan_blocks(*mesh, half_width, chroma, plans.data());
  }
};

TEST(Blocks, CoverThePanoramaOnce) {
  for (const auto& [width, height] : {std::pair{64, 32}, {256, 128}, {200, 82}, {66, 34}, {1000, 500}}) {
    const Plans planned(city_square(), {width, height, kTurns[1]}, kHalved);
    std::vector<int> covered(std::size_t(width) * std::size_t(height));
    for (const BlockPlan& plan : planned.plans) {
      ASSERT_LE(plan.block.width, ring::kBlockWidth);
      ASSERT_LE(plan.block.height, ring::kBlockHeight);
      ASSERT_EQ((plan.block.x | plan.block.y | plan.block.width | plan.block.height) % 2, 0);
      for (int y = plan.block.y; y < plan.block.y + plan.block.height; ++y) {
        for (int x = plan.block.x; x < plan.block.x + plan.block.width; ++x) ++covered[std::size_t(y * width + x)];
      }
    }
    EXPECT_EQ(std::count(covered.begin(), covered.end(), 1), std::ptrdiff_t(covered.size()));
    for (std::size_t i = 0; i < planned.plans.size(); ++i) {
      EXPECT_EQ(planned.plans[i].kind == BlockKind::ring, int(i) >= planned.lens_blocks) << "those of one lens come first";
    }
  }
}

// A block is one lens's alone only if all its pixels are outside the ring, on that lens's side, and the ring's only if one is
// in it or close to it: by 3 pixels, as far as one may be from where it is looked at, and one more, as that goes on past the
// block.
TEST(Blocks, AreOfTheLensThatSeesThem) {
  for (const View& view : kViews) {
    const Plans planned(city_square(), view, kHalved);
    const double half_width = planned.half_width * 2 * kPi / (1 << ring::kTurnBits);
    const double close = 5 * 2 * kPi / std::min(view.width, 2 * view.height);
    int kinds[3] = {};
    for (const BlockPlan& plan : planned.plans) {
      double least = 9, largest = -9;
      for (int y = plan.block.y; y < plan.block.y + plan.block.height; ++y) {
        for (int x = plan.block.x; x < plan.block.x + plan.block.width; ++x) {
          const double b = reference_ring(reference_direction(view, x, y)).b;
          least = std::min(least, b);
          largest = std::max(largest, b);
        }
      }
      if (plan.kind == BlockKind::lens0) {
        ASSERT_LT(largest, -half_width);
      } else if (plan.kind == BlockKind::lens1) {
        ASSERT_GT(least, half_width);
      } else {
        ASSERT_LT(least, half_width + close);
        ASSERT_GT(largest, -half_width - close);
      }
      ++kinds[int(plan.kind)];
    }
    if (view.height < view.width / 2) continue;  // half of a block's rows may be beside the ring
    for (const int count : kinds) EXPECT_GT(count, int(planned.plans.size()) / 12);
  }
}

// The widening is that of the largest step along an axis of the picture anywhere in the block, up to what the step changes by
// within a node's distance past it.
TEST(Blocks, WidenKernelsByHowMuchAPictureIsShrunk) {
  for (const double scale : {0.5, 1.0, 2.0, 4.0}) {
    const Camera camera = scaled_camera(bent_pair(), int(960 * scale));
    for (const Turn& turn : kTurns) {
      const View view = {1280, 640, turn};
      for (const PlaneGrid& grid : {PlaneGrid{1, 0, 0, 0}, kHalved}) {
        const Plans planned(camera, view, grid);
        for (const BlockPlan& plan : planned.plans) {
          if (plan.kind == BlockKind::ring) continue;
          const int lens = plan.kind == BlockKind::lens1;
          for (const PlaneGrid& of : {PlaneGrid{}, grid}) {
            const int step_x = 1 << of.bits_x, step_y = 1 << of.bits_y;
            double least_x = 1e9, least_y = 1e9, most_x = 0, most_y = 0;
            const auto step_at = [&](int x, int y) {
              const auto at = [&](double dx, double dy) {
                return reference_place(camera, lens, reference_direction(view, x + dx, y + dy));
              };
              const Place left = at(-0.5, 0), right = at(0.5, 0), above = at(0, -0.5), below = at(0, 0.5);
              const double sx = std::hypot((right.x - left.x) * step_x, (below.x - above.x) * step_y) / step_x;
              const double sy = std::hypot((right.y - left.y) * step_x, (below.y - above.y) * step_y) / step_y;
              most_x = std::max(most_x, sx);
              most_y = std::max(most_y, sy);
              least_x = std::min(least_x, sx);
              least_y = std::min(least_y, sy);
            };
            for (int y = plan.block.y; y < plan.block.y + plan.block.height; y += 4) {
              for (int x = plan.block.x; x < plan.block.x + plan.block.width; x += 4) step_at(x, y);
            }
            const ring::Widenings got = of.bits_x == 0 ? plan.luma[lens] : plan.chroma[lens];
            // Steps at nodes are means over two nodes' distance: up to a twentieth off.
            EXPECT_GE(got.across, ring::widening_for(most_x * 0.95)) << most_x;
            EXPECT_GE(got.down, ring::widening_for(most_y * 0.95)) << most_y;
            // The last nodes stand past the block, where a step may be larger by as much as it changes in it.
            EXPECT_LE(got.across, ring::widening_for((2 * most_x - least_x) * 1.05)) << most_x << " " << least_x;
            EXPECT_LE(got.down, ring::widening_for((2 * most_y - least_y) * 1.05)) << most_y << " " << least_y;
          }
        }
        if (HasFailure()) return;
      }
    }
  }
}

// Where a lens is asked for samples they lie in the block's box, which isn't larger than a node's distance makes it.
TEST(Blocks, KnowWhereTheirSamplesLie) {
  constexpr double kBeside = 2;  // pixels, by which positions swing past nodes
  const Camera camera = scaled_camera(bent_pair(), 960);
  for (const Turn& turn : kTurns) {
    const View view = {1280, 640, turn};
    const Plans planned(camera, view, kHalved);
    for (const BlockPlan& plan : planned.plans) {
      if (plan.kind == BlockKind::ring) continue;
      const int lens = plan.kind == BlockKind::lens1;
      const ring::PictureBox& box = plan.box[lens];
      double left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
      for (int y = plan.block.y; y < plan.block.y + plan.block.height; ++y) {
        for (int x = plan.block.x; x < plan.block.x + plan.block.width; ++x) {
          const Place at = reference_place(camera, lens, reference_direction(view, x, y));
          left = std::min(left, at.x);
          right = std::max(right, at.x);
          top = std::min(top, at.y);
          bottom = std::max(bottom, at.y);
        }
      }
      ASSERT_LE(box.left, left + kBeside);
      ASSERT_LE(box.top, top + kBeside);
      ASSERT_GE(box.right, right - kBeside);
      ASSERT_GE(box.bottom, bottom - kBeside);
      const double most = 32 + 1.1 * (right - left + bottom - top);
      ASSERT_LE(box.right - box.left, most);
      ASSERT_LE(box.bottom - box.top, most);
    }
  }
}

}  // namespace
}  // namespace biseam::test
