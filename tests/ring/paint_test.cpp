// Whole frames against the definition in double precision, and where lenses agree or don't.
#include "ring/paint.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "ring/blocks.hpp"
#include "ring/engine_fixture.hpp"
#include "ring/mesh_fixture.hpp"

namespace biseam::test {
namespace {

using ring::BlockPlan;
using ring::EngineConfig;
using ring::SeamMode;

// ---- Against the reference ---------------------------------------------------------------------------------------------

// How a frame's blocks widen their kernels: the one thing that is taken over from the engine, as it is block by block.
class BlockWidenings {
 public:
  BlockWidenings(const EngineConfig& config, const Turn& turn, const ring::PlaneGrid& chroma)
      : mesh_(config.camera, config.width, config.height), plans_(std::size_t(ring::block_count(config.width, config.height))) {
    mesh_.build(turn);
    ring::plan_blocks(*mesh_, ring::ring_shape(config.camera, config.width).half_width, chroma, plans_.data());
    for (const BlockPlan& plan : plans_) at_[{plan.block.x / 64, plan.block.y / 32}] = &plan;
  }
  ring::Widenings at(int channel, int lens, int luma_x, int luma_y) const {
    const BlockPlan& plan = *at_.at({luma_x / 64, luma_y / 32});
    return channel == 0 ? plan.luma[lens] : plan.chroma[lens];
  }

 private:
  OwnMesh mesh_;
  std::vector<BlockPlan> plans_;
  std::map<std::pair<int, int>, const BlockPlan*> at_;
};

Kernel kernel_of(ring::Quality quality) {
  return quality == ring::Quality::fast ? Kernel::bilinear : quality == ring::Quality::good ? Kernel::cubic : Kernel::spline36;
}

struct Interval {
  double low = 1e9, high = -1e9;
  void take(double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
};

// What a sample at a position that is known to within such errors may be.  Between its ends a kernel's piece bends by less than
// 0.01 codes over so short a way; where pieces meet is tried too.
Interval samples_within(const ReferencePlane& plane, Kernel kernel, const Place& at, const Widening& widening, double error_x,
                        double error_y) {
  Interval found;
  std::vector<double> xs = {at.x - error_x, at.x, at.x + error_x}, ys = {at.y - error_y, at.y, at.y + error_y};
  if (std::abs(at.x - std::round(at.x)) < error_x) xs.push_back(std::round(at.x));
  if (std::abs(at.y - std::round(at.y)) < error_y) ys.push_back(std::round(at.y));
  for (const double y : ys) {
    for (const double x : xs) found.take(reference_sample(plane, kernel, x, y, widening));
  }
  return found;
}

struct Case {
  ring::Quality quality;
  int format, siting, panorama_siting;
};

class ReferenceAccuracy : public testing::TestWithParam<Case> {
 protected:
  ReferenceAccuracy() : config_(small_config(GetParam().format)), format_(test_format(GetParam().format)) {
    config_.quality = GetParam().quality;
  }

  ReferencePlane plane_of(const OwnPicture& picture, int channel) const {
    ReferencePlane plane = grid_of(format_, channel, GetParam().siting);
    plane.width = picture.columns(channel);
    plane.height = picture.rows(channel);
    for (const int value : picture.channel(channel)) plane.samples.push_back(value);
    return plane;
  }

  // A frame differs from the definition
  // - by its positions: the mesh's 0.005 pixels, and half a phase's length;
  // - by its weights: each of an axis's taps is within 1/8192 of the true one, and as all add up to 1 only what samples differ
  //   by from the middle of their range counts; those of the second axis weigh what is up to 1.5 times as far from it;
  // - by roundings: a sum across to a unit of 2^(bits - 14) codes, weighed by up to 1.5 down; such a unit again inside blocks
  //   of the ring; half a code at last.
  double slack(const ring::AxisWeights& across, const ring::AxisWeights& down) const {
    const double half_range = std::ldexp(75.5, format_.bits - 8), unit = std::ldexp(1.0, format_.bits - 14);
    const double weights = 1.5 * half_range * (across.taps + down.taps) / 8192;
    return weights + 0.5 * (1.5 * unit + unit) + 0.5 + std::ldexp(0.01, format_.bits - 8);
  }

  // Returns how many samples were compared.
  int compare(const OwnPicture& panorama, const Fisheyes& fisheyes, const Turn& turn, int channel) {
    const ReferencePlane pictures[2] = {plane_of(fisheyes.lens[0], channel), plane_of(fisheyes.lens[1], channel)};
    const ReferencePlane grid = grid_of(format_, channel, GetParam().panorama_siting);
    const RingOfView ring(config_, turn, grid);
    const BlockWidenings widenings(config_, turn, {format_.sub_x - 1, format_.sub_y - 1, 0, 0});
    int compared = 0;
    for (int y = 0; y < panorama.rows(channel); ++y) {
      for (int x = 0; x < panorama.columns(channel); ++x) {
        if (ring.touches(x, y)) continue;
        const int lens = ring.across(x, y) > 0 ? 1 : 0;
        const ReferencePlane& picture = pictures[lens];
        Place at = reference_place(config_.camera, lens, ring.direction(x, y));
        at.x = (at.x - picture.offset_x) / picture.sub_x;
        at.y = (at.y - picture.offset_y) / picture.sub_y;
        const ring::Widenings w = widenings.at(channel, lens, x * grid.sub_x, y * grid.sub_y);
        const ring::AxisWeights &across = ring::axis_weights(config_.quality, w.across),
                                &down = ring::axis_weights(config_.quality, w.down);
        const Interval truth =
            samples_within(picture, kernel_of(config_.quality), at, {ring::kWidenings[w.across], ring::kWidenings[w.down]},
                           0.005 + std::ldexp(0.5, -across.phase_bits), 0.005 + std::ldexp(0.5, -down.phase_bits));
        const int got = panorama.get(channel, x, y);
        const double off = std::max(truth.low - got, got - truth.high);
        worst_ = std::max(worst_, off);
        EXPECT_LE(off, slack(across, down)) << "channel " << channel << " at " << x << ", " << y;
        if (testing::Test::HasFailure()) return compared;
        ++compared;
      }
    }
    return compared;
  }

  EngineConfig config_;
  TestFormat format_;
  double worst_ = 0;
};

TEST_P(ReferenceAccuracy, FramesShowTheLensOutsideTheRing) {
  OwnEngine engine(config_);
  Fisheyes fisheyes(config_, waves_of(format_.bits), {}, GetParam().siting);
  for (const Turn& turn : kTurns) {
    const OwnPicture panorama = engine.stitch(fisheyes, turn, {}, GetParam().panorama_siting);
    for (int c = 0; c < format_.channels(); ++c) {
      const int compared = compare(panorama, fisheyes, turn, c);
      ASSERT_FALSE(HasFailure()) << "turned by " << turn.yaw << ", " << turn.pitch << ", " << turn.roll;
      EXPECT_GT(compared, panorama.columns(c) * panorama.rows(c) / 2);
    }
  }
  RecordProperty("worst_thousandths", int(worst_ * 1000));
}

INSTANTIATE_TEST_SUITE_P(Cases, ReferenceAccuracy,
                         testing::Values(Case{ring::Quality::fast, BISEAM_NV12, BISEAM_SITING_LEFT, BISEAM_SITING_LEFT},
                                         Case{ring::Quality::good, BISEAM_NV21, BISEAM_SITING_MIDDLE, BISEAM_SITING_LEFT},
                                         Case{ring::Quality::best, BISEAM_I420, BISEAM_SITING_LEFT, BISEAM_SITING_TOP_LEFT},
                                         Case{ring::Quality::good, BISEAM_I422P10, BISEAM_SITING_TOP_LEFT,
                                              BISEAM_SITING_MIDDLE},
                                         Case{ring::Quality::best, BISEAM_P012, BISEAM_SITING_MIDDLE, BISEAM_SITING_MIDDLE},
                                         Case{ring::Quality::good, BISEAM_I444P12, BISEAM_SITING_LEFT, BISEAM_SITING_LEFT}));

// ---- What lenses agree on ----------------------------------------------------------------------------------------------

// A smooth scene by direction.
double scene(const Vec3& d, int channel) {
  return 128 + 40 * std::sin(5 * d.x + 2 * d.y + channel) + 30 * std::sin(4 * d.z - 3 * d.y) + 20 * std::cos(6 * d.y + d.x);
}

struct SceneCase {
  SeamMode seam;
  int format;
};
class SameScene : public testing::TestWithParam<SceneCase> {};

TEST_P(SameScene, TheRingEqualsAHardCut) {
  EngineConfig config = small_config(GetParam().format);
  config.seam = GetParam().seam;
  const TestFormat& format = test_format(config.format);
  const Projector projectors[2] = {Projector(config.camera, 0), Projector(config.camera, 1)};
  Fisheyes fisheyes(config, [&](int lens, int channel, int x, int y) {
    const ReferencePlane grid = grid_of(format, channel, BISEAM_SITING_LEFT);
    const Vec3 d = projectors[lens].unproject(grid.sub_x * x + grid.offset_x, grid.sub_y * y + grid.offset_y);
    return int(std::lround(std::ldexp(scene(d, channel), format.bits - 8)));
  });
  OwnEngine engine(config);
  for (const Turn& turn : kTurns) {
    const OwnPicture panorama = engine.stitch(fisheyes, turn);
    for (int c = 0; c < format.channels(); ++c) {
      const ReferencePlane grid = grid_of(format, c, BISEAM_SITING_LEFT);
      ReferencePlane pictures[2] = {grid, grid};
      for (int k = 0; k < 2; ++k) {
        pictures[k].width = fisheyes.lens[k].columns(c);
        pictures[k].height = fisheyes.lens[k].rows(c);
        for (const int value : fisheyes.lens[k].channel(c)) pictures[k].samples.push_back(value);
      }
      const RingOfView ring(config, turn, grid);
      for (int y = 0; y < panorama.rows(c); ++y) {
        for (int x = 0; x < panorama.columns(c); ++x) {
          const int lens = ring.across(x, y) > 0 ? 1 : 0;
          const Place at = reference_place(config.camera, lens, ring.direction(x, y));
          const double cut = std::round(reference_sample(pictures[lens], Kernel::cubic, (at.x - grid.offset_x) / grid.sub_x,
                                                         (at.y - grid.offset_y) / grid.sub_y, {}));
          ASSERT_NEAR(panorama.get(c, x, y), cut, 1) << "channel " << c << " at " << x << ", " << y << ", pitch " << turn.pitch;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, SameScene,
                         testing::Values(SceneCase{SeamMode::search, BISEAM_I444}, SceneCase{SeamMode::middle, BISEAM_I444},
                                         SceneCase{SeamMode::search, BISEAM_NV12}));

// ---- What lenses don't agree on ----------------------------------------------------------------------------------------

TEST(Frames, OutsideTheRingOnlyOneLensCounts) {
  for (const int code : {BISEAM_NV12, BISEAM_I422P10}) {
    EngineConfig config = small_config(code);
    const TestFormat& format = test_format(code);
    OwnEngine engine(config);
    const auto noise = noise_of(format.bits, 1), other = noise_of(format.bits, 77);
    Fisheyes fisheyes(config, noise);
    for (const Turn& turn : kTurns) {
      const OwnPicture before = engine.stitch(fisheyes, turn);
      for (int changed = 0; changed < 2; ++changed) {
        Fisheyes others(config,
                        [&](int lens, int c, int x, int y) { return (lens == changed ? other : noise)(lens, c, x, y); });
        const OwnPicture after = engine.stitch(others, turn);
        for (int c = 0; c < 3; ++c) {
          const RingOfView ring(config, turn, grid_of(format, c, BISEAM_SITING_LEFT));
          int same = 0, different = 0;
          for (int y = 0; y < before.rows(c); ++y) {
            for (int x = 0; x < before.columns(c); ++x) {
              if (ring.touches(x, y)) continue;
              const bool own = (ring.across(x, y) > 0) == (changed == 1);
              if (!own) {
                ASSERT_EQ(before.get(c, x, y), after.get(c, x, y)) << c << " at " << x << ", " << y;
              }
              ++(before.get(c, x, y) == after.get(c, x, y) ? same : different);
            }
          }
          EXPECT_GT(same, before.columns(c) * before.rows(c) / 4);
          EXPECT_GT(different, before.columns(c) * before.rows(c) / 4);
        }
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
