// Frames that are measured, and frames that follow guides.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

#include "ring/guide/smooth.hpp"
#include "ring/lit_scene.hpp"
#include "support/isas.hpp"

namespace biseam::test {
namespace {

using ring::EngineConfig;
using Guide = std::vector<uint8_t>;

EngineConfig guided_config(int format = BISEAM_NV12) {
  EngineConfig config = small_config(format);
  config.camera = scaled_camera(city_square(), 360);
  config.width = 512;
  config.height = 256;
  config.steady_seam = config.match_light = config.match_near = true;
  config.rate = 8;
  return config;
}

const Film& film_of(int format) {
  static const Film bytes(guided_config()), words(guided_config(BISEAM_P010));
  return format == BISEAM_P010 ? words : bytes;
}

// A walk with a cut in it, a flash, a frame that is black and one lens that is covered for a while.
constexpr int kFrames = 24, kCut = 10, kFlash = 5, kBlack = 15, kCovered = 18, kUncovered = 20;

LitScene scene_at(int frame) {
  const Turn turn = frame < kCut ? Turn{2.0 * frame, 0, 0} : Turn{2.0 * frame, 0, 90};
  LitScene scene{[turned = rotation(turn)](const Vec3& d) { return gravel(turned * d); }, {}};
  scene.lens[1].exposure = 0.1 + 0.01 * frame + (frame == kFlash ? 0.6 : 0);
  scene.noise = 2;
  scene.seed = static_cast<std::uint32_t>(frame);
  scene.covered[0] = frame == kBlack;
  scene.covered[1] = frame == kBlack || (frame >= kCovered && frame < kUncovered);
  return scene;
}

std::vector<Fisheyes> frames_of(int format, int first, int end) {
  std::vector<Fisheyes> frames;
  for (int i = first; i < end; ++i) frames.push_back(film_of(format).of(scene_at(i)));
  return frames;
}

std::vector<Fisheyes>& walk() {
  static std::vector<Fisheyes> frames = frames_of(BISEAM_NV12, 0, kFrames);
  return frames;
}

std::vector<Guide> measured(const EngineConfig& config) {
  OwnEngine engine(config);
  std::vector<Guide> guides;
  for (Fisheyes& frame : walk()) guides.push_back(engine.measure(frame));
  return guides;
}

std::vector<Guide> smoothed(const EngineConfig& config, const std::vector<Guide>& guides) {
  OwnEngine engine(config);
  std::vector<const void*> all;
  for (const Guide& guide : guides) all.push_back(guide.data());
  std::vector<Guide> made(guides.size(), Guide(guides[0].size()));
  for (std::size_t i = 0; i < guides.size(); ++i) {
    smooth_guide(ring::guide_shape(engine.engine()), all.data(), static_cast<int>(all.size()), static_cast<int>(i),
                 made[i].data());
  }
  return made;
}

std::vector<char> state_of(OwnEngine& engine) {
  std::vector<char> state(state_bytes(ring::state_of(engine.engine())));
  save_state(ring::state_of(engine.engine()), state.data());
  return state;
}

void expect_same(const OwnPicture& wanted, const OwnPicture& got, const std::string& which) {
  EXPECT_EQ(wanted.bytes(), got.bytes()) << which;
}

TEST(MeasuredFrame, LeavesTheStateThatAStitchedOneDoes) {
  OwnEngine measures(guided_config()), stitches(guided_config());
  for (int i = 0; i < 4; ++i) {
    measures.measure(walk()[static_cast<std::size_t>(i)]);
    stitches.stitch(walk()[static_cast<std::size_t>(i)]);
    EXPECT_EQ(state_of(measures), state_of(stitches)) << i;
  }
  expect_same(stitches.stitch(walk()[4]), measures.stitch(walk()[4]), "and goes on");
}

TEST(MeasuredFrame, TellsWhereScenesBegin) {
  const EngineConfig config = guided_config();
  const std::vector<Guide> guides = measured(config);
  const ring::GuideShape shape = ring::guide_shape(OwnEngine(config).engine());
  for (int i = 0; i < kFrames; ++i) {
    EXPECT_EQ(ring::GuideReader(shape, guides[static_cast<std::size_t>(i)].data()).starts(), i == 0 || i == kCut) << i;
    EXPECT_EQ(check_guide(shape, guides[static_cast<std::size_t>(i)].data()), ring::GuideTrouble::none) << i;
  }
}

TEST(GuidedFrame, OfItsOwnMeasureIsAFirstFrame) {
  for (const bool near : {false, true}) {
    for (const bool steady : {false, true}) {
      EngineConfig config = guided_config();
      config.match_near = near;
      config.steady_seam = steady;
      OwnEngine engine(config), fresh(config);
      const Guide guide = engine.measure(walk()[3]);
      expect_same(fresh.stitch(walk()[3]), engine.follow(walk()[3], guide), "near and steady or not");
    }
  }
  EngineConfig middle = guided_config();
  middle.seam = ring::SeamMode::middle;
  middle.steady_seam = false;
  OwnEngine engine(middle), fresh(middle);
  const Guide guide = engine.measure(walk()[3]);
  expect_same(fresh.stitch(walk()[3]), engine.follow(walk()[3], guide), "in the middle");
}

TEST(GuidedFrame, HasNoPastAndLeavesNothing) {
  const EngineConfig config = guided_config();
  const std::vector<Guide> guides = smoothed(config, measured(config));
  OwnEngine whole(config), shuffled(config);
  std::vector<OwnPicture> wanted;
  for (std::size_t i = 0; i < kFrames; ++i) wanted.push_back(whole.follow(walk()[i], guides[i]));
  EXPECT_EQ(state_of(whole), state_of(shuffled)) << "as if nothing had been";
  for (int i = 0; i < 3; ++i) shuffled.stitch(walk()[static_cast<std::size_t>(i)]);
  const std::vector<char> before = state_of(shuffled);
  std::vector<std::size_t> order(kFrames);
  std::iota(order.begin(), order.end(), 0u);
  std::shuffle(order.begin(), order.end(), std::mt19937(3));
  for (const std::size_t i : order) {
    expect_same(wanted[i], shuffled.follow(walk()[i], guides[i]), "frame " + std::to_string(i));
  }
  EXPECT_EQ(state_of(shuffled), before);
}

class GuidedFrameOn : public KeptIsa {};

TEST_F(GuidedFrameOn, AnyThreadsAndInstructionSetIsTheSame) {
  for (const int format : {BISEAM_NV12, BISEAM_P010}) {
    EngineConfig config = guided_config(format);
    std::vector<Fisheyes> frames = frames_of(format, kCut - 1, kCut + 2);
    std::vector<Guide> wanted;
    std::vector<OwnPicture> pictures;
    for (const Isa isa : isas_here()) {
      ASSERT_TRUE(limit_isa(isa));
      for (const int threads : {1, 3}) {
        config.threads = threads;
        OwnEngine engine(config);
        for (std::size_t i = 0; i < 3; ++i) {
          const std::string which = std::string(name_of(isa)) + ", frame " + std::to_string(i);
          const Guide guide = engine.measure(frames[i]);
          OwnPicture picture = engine.follow(frames[i], guide);
          if (wanted.size() == i) wanted.push_back(guide), pictures.push_back(picture);
          EXPECT_EQ(guide, wanted[i]) << which;
          expect_same(pictures[i], picture, which);
        }
      }
    }
  }
}

// Mean difference in luma, codes of 8 bits, of panoramas of a frame without noise and what both lenses show in equal light.
double strangeness(const OwnPicture& got, const OwnPicture& wanted) {
  double sum = 0;
  const auto a = got.channel(0), b = wanted.channel(0);
  for (std::size_t i = 0; i < a.size(); ++i) sum += std::abs(double(a[i]) - double(b[i]));
  return sum / double(a.size());
}

// Strip samples a frame, a mean over the seam.
double movement(const ring::GuideShape& shape, const Guide& from, const Guide& to) {
  const ring::GuideReader a(shape, from.data()), b(shape, to.data());
  double sum = 0;
  for (int t = 0; t < shape.strip.length; ++t) sum += std::abs(a.row(t) - b.row(t));
  return sum / shape.strip.length / ring::kGuideRow;
}

TEST(GuidedFrame, HasASeamThatHardlyMovesInAStillScene) {
  EngineConfig config = guided_config();
  config.camera.lens[1].p *= 1.004;  // so that there is something to avoid
  const Film::Exposed scene = film_of(BISEAM_NV12).expose({gravel, {}});
  OwnEngine engine(config);
  const ring::GuideShape shape = ring::guide_shape(engine.engine());
  std::vector<Guide> guides;
  for (int i = 0; i < 24; ++i) {
    Fisheyes frame = film_of(BISEAM_NV12).develop(scene, 2, static_cast<std::uint32_t>(i));
    guides.push_back(engine.measure(frame));
  }
  const std::vector<Guide> still = smoothed(config, guides);
  double found = 0, kept = 0;
  for (std::size_t i = 1; i < guides.size(); ++i) {
    found += movement(shape, guides[i - 1], guides[i]) / 23;
    kept += movement(shape, still[i - 1], still[i]) / 23;
  }
  const double columns = static_cast<double>(config.width) / shape.strip.length;
  EXPECT_LE(kept * columns, 0.05);
  EXPECT_GT(found, kept) << "or there would be nothing to smooth";
}

// Light that changes all of a sudden: with what comes after known, the frames round the change are right.
TEST(GuidedFrame, IsRightWhereLightChangesAllOfASudden) {
  EngineConfig config = guided_config();
  config.match_near = false;
  constexpr int kStep = 6;
  LitScene scene{meadow, {}};
  Fisheyes plain = film_of(BISEAM_NV12).of(scene);
  scene.lens[0].exposure = 0.25;
  scene.lens[1].exposure = -0.25;
  std::vector<Fisheyes> frames(kStep, plain);
  frames.resize(2 * kStep, film_of(BISEAM_NV12).of(scene));
  EngineConfig unmatched = config;
  unmatched.match_light = false;
  const OwnPicture truth = OwnEngine(unmatched).stitch(plain);
  OwnEngine causal(config), measures(config), follows(config);
  std::vector<Guide> guides;
  std::vector<OwnPicture> live;
  for (Fisheyes& frame : frames) {
    guides.push_back(measures.measure(frame));
    live.push_back(causal.stitch(frame));
  }
  guides = smoothed(config, guides);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    EXPECT_LE(strangeness(follows.follow(frames[i], guides[i]), truth), 0.6) << i;
  }
  EXPECT_GE(strangeness(live[kStep], truth), 2) << "or there is nothing to gain";
}

}  // namespace
}  // namespace biseam::test
