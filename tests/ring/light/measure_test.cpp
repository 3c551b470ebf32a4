#include "ring/light/measure.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "ring/light/matching.hpp"
#include "ring/light/scene_cut.hpp"
#include "ring/lit_scene.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

// Strips of a scene by ring coordinates, seen by two lenses, without pictures between.
struct OwnStrips {
  StripShape shape;
  std::vector<int16_t> planes[2][3];
  Tone tone = make_tone(Transfer::bt709, false, false);

  OwnStrips(StripShape size, const LitScene& scene) : shape(size) {
    RandomSource random;
    for (int lens = 0; lens < 2; ++lens) {
      for (int t = 0; t < shape.length; ++t) {
        for (int b = 0; b < shape.width; ++b) {
          const double round = 2 * kPi * t / shape.length, across = (b - 0.5 * (shape.width - 1)) * 2 * kPi / shape.length;
          const Vec3 d = {std::cos(across) * std::cos(round), std::cos(across) * std::sin(round), std::sin(across)};
          const double angle = kPi / 2 + (lens == 0 ? across : -across);
          const auto codes = bt709_codes(lens_light(scene.lens[lens], scene.light(d), angle, round));
          for (std::size_t c = 0; c < 3; ++c) {
            const double noise = scene.noise * static_cast<double>(random.real_between(-1.7f, 1.7f));
            const double code = scene.covered[lens] ? (c == 0 ? 16 : 128) : codes[c] + noise;
            planes[lens][c].push_back(static_cast<int16_t>(std::lround(std::clamp(code, 0.0, 255.0) * 64)));
          }
        }
      }
    }
  }

  LightFrame measure() const {
    LogTable logs;
    fill_logs(tone, logs);
    StripPair pair{shape, {}};
    for (int lens = 0; lens < 2; ++lens) {
      for (std::size_t c = 0; c < 3; ++c) pair.planes[lens][c] = planes[lens][c].data();
    }
    LightFrame frame;
    for (int s = 0; s < kSectors; ++s) frame.sectors[s] = measure_sector(pair, tone, logs, s);
    return frame;
  }
};

constexpr StripShape kShape{480, 28};

double code_log(double light_ratio) { return 0.45 * std::log2(light_ratio); }

TEST(MeasureSector, FindsExposureAndBalance) {
  for (const auto& light : {meadow, gravel}) {
    LitScene scene{light, {}};
    scene.lens[0].exposure = -0.6;
    scene.lens[1].exposure = 0.4;
    scene.lens[1].balance = kWarmer;
    scene.noise = 0.5;
    const LightFrame frame = OwnStrips(kShape, scene).measure();
    for (const SectorLight& sector : frame.sectors) {
      ASSERT_GT(sector.count, 40);
      for (std::size_t c = 0; c < 3; ++c) {
        // 0.002 of a factor: 0.3 codes of 150.
        EXPECT_NEAR(sector.logs[c] / double(kLogOne), code_log(2 * kWarmer[c]), 0.003);
      }
    }
  }
}

TEST(MeasureSector, ThingsThatOneLensSeesElsewhereDontCount) {
  LitScene scene{meadow, {}};
  scene.lens[1].exposure = 0.5;
  OwnStrips strips(kShape, scene);
  const LightFrame clean = strips.measure();
  // A third of every row: something of another brightness.
  for (int t = 0; t < kShape.length; ++t) {
    for (int b = 0; b < kShape.width / 3; ++b) {
      strips.planes[1][0][static_cast<std::size_t>(t * kShape.width + b)] = 190 << 6;
    }
  }
  const LightFrame frame = strips.measure();
  for (int s = 0; s < kSectors; ++s) {
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(frame.sectors[s].logs[c], clean.sectors[s].logs[c], 0.01 * kLogOne) << s;
  }
}

TEST(MeasureSector, KnowsNothingOfBlackWhiteAndWhatIsCovered) {
  const auto none = [](const LightFrame& frame) {
    for (const SectorLight& sector : frame.sectors) {
      EXPECT_EQ(sector.count, 0);
      for (const int32_t log : sector.logs) EXPECT_EQ(log, 0);
      EXPECT_EQ(sector.slope_xx, 0);
    }
  };
  none(OwnStrips(kShape, {[](const Vec3&) { return Rgb{0, 0, 0}; }, {}}).measure());
  none(OwnStrips(kShape, {[](const Vec3&) { return Rgb{1, 1, 1}; }, {}}).measure());
  LitScene covered{meadow, {}};
  covered.covered[0] = true;
  none(OwnStrips(kShape, covered).measure());
}

TEST(MeasureSector, ClippedSkyDoesntCount) {
  // Above the horizon lens 1 is clipped; below, it is lighter by half a stop.
  LitScene scene{[](const Vec3& d) { return d.y < 0 ? Rgb{0.9, 0.9, 0.9} : meadow(d); }, {}};
  scene.lens[1].exposure = 0.5;
  const LightFrame frame = OwnStrips(kShape, scene).measure();
  for (int s = 0; s < kSectors; ++s) {
    if (frame.sectors[s].count == 0) continue;
    EXPECT_NEAR(frame.sectors[s].logs[1] / double(kLogOne), code_log(std::exp2(0.5)), 0.01) << s;
  }
  EXPECT_EQ(frame.sectors[12].count, 0);
  EXPECT_GT(frame.sectors[4].count, 100);
}

TEST(MeasureSector, FindsTheSlopeOfAVignette) {
  LitScene scene{meadow, {}};
  scene.lens[0].vignette = scene.lens[1].vignette = 0.25;
  const LightFrame frame = OwnStrips({480, 28}, scene).measure();
  LightMemory memory{};
  memory.span = 1;
  remember(memory, frame);
  const LightModel model = model_of(memory);
  EXPECT_NEAR(model.whole[1], 0, 0.004 * kLogOne);
  const auto falloff = [&](double across) {
    const auto of = [](double angle) { return 1 - 0.25 * std::pow(angle / (100 * kDegree), 2); };
    return code_log(of(kPi / 2 - across) / of(kPi / 2 + across));
  };
  const double pitch = 2 * kPi / 480;
  EXPECT_NEAR(model.slope * 10 / kLogOne, falloff(10 * pitch), 0.1 * falloff(10 * pitch));
}

// ---- In time -----------------------------------------------------------------------------------------------------------

LightFrame flat(double log, int count = 500) {
  LightFrame frame{};
  for (SectorLight& sector : frame.sectors) {
    sector.count = count;
    for (int32_t& l : sector.logs) l = static_cast<int32_t>(log * kLogOne);
  }
  return frame;
}

LightMemory memory_of(int span) {
  LightMemory memory{};
  memory.span = span;
  return memory;
}

TEST(LightModel, IsTheMeanOfHalfASecond) {
  EXPECT_EQ(light_span(30), 15);
  EXPECT_EQ(light_span(25), 13);
  EXPECT_EQ(light_span(1), 1);
  EXPECT_EQ(light_span(240), LightMemory::kMostFrames);
  LightMemory memory = memory_of(15);
  for (int i = 0; i < 20; ++i) remember(memory, flat(0));
  for (int i = 1; i <= 15; ++i) {
    remember(memory, flat(0.3));
    EXPECT_NEAR(model_of(memory).whole[0] / kLogOne, 0.3 * i / 15, 0.002) << i;
  }
}

TEST(LightModel, DoesntDependOnWhatCameBefore) {
  LightMemory memory = memory_of(7), other = memory_of(7);
  for (int i = 0; i < 12; ++i) remember(other, flat(-0.5 + 0.01 * i));
  for (int i = 0; i < 7; ++i) {
    remember(memory, flat(0.02 * i, 300 + i));
    remember(other, flat(0.02 * i, 300 + i));
  }
  const LightModel a = model_of(memory), b = model_of(other);
  for (int c = 0; c < 3; ++c) EXPECT_EQ(a.whole[c], b.whole[c]);
  for (int s = 0; s < kSectors; ++s) EXPECT_EQ(a.rest[s][0], b.rest[s][0]);
  EXPECT_EQ(a.slope, b.slope);
}

TEST(LightModel, OneSectorsOwnLightMovesTheWholeALittle) {
  LightFrame frame = flat(0.1);
  for (int c = 0; c < 3; ++c) frame.sectors[5].logs[c] = static_cast<int32_t>(0.5 * kLogOne);
  LightMemory memory = memory_of(1);
  remember(memory, frame);
  const LightModel model = model_of(memory);
  EXPECT_NEAR(model.whole[0] / kLogOne, 0.1, 0.006);
  EXPECT_NEAR((model.whole[0] + model.rest[5][0]) / kLogOne, 0.5, 0.03);
}

TEST(LightModel, SectorsThatKnowNothingFollowTheOthers) {
  LightFrame frame = flat(0.2);
  for (int s = 8; s < kSectors; ++s) frame.sectors[s] = {};
  LightMemory memory = memory_of(1);
  remember(memory, frame);
  const LightModel model = model_of(memory);
  EXPECT_NEAR(model.whole[0] / kLogOne, 0.2, 0.002);
  for (int s = 8; s < kSectors; ++s) EXPECT_EQ(model.rest[s][0], 0);
  remember(memory, LightFrame{});
  EXPECT_EQ(model_of(memory).whole[0], 0) << "nothing is known";
}

// ---- Cuts --------------------------------------------------------------------------------------------------------------

RingImage image_of(const LitScene& scene, int lens = 0) {
  const OwnStrips strips(kShape, scene);
  return ring_image(strips.planes[lens][0].data(), kShape);
}

LitScene turned(double yaw, double noise = 2) {
  LitScene scene{[yaw](const Vec3& d) { return gravel(rotation({yaw, 0, 0}) * d); }, {}};
  scene.noise = noise;
  return scene;
}

TEST(SceneCut, NoiseMotionAndFlashesAreNone) {
  const RingImage still = image_of(turned(0));
  EXPECT_FALSE(is_other_scene(still, image_of(turned(0))));
  EXPECT_FALSE(is_other_scene(still, image_of(turned(3))));
  LitScene flash = turned(0);
  flash.lens[0].exposure = 1;
  EXPECT_FALSE(is_other_scene(still, image_of(flash)));
  const LitScene black{[](const Vec3&) { return Rgb{0, 0, 0}; }, {}, 2};
  EXPECT_FALSE(is_other_scene(image_of(black), image_of(black)));
}

TEST(SceneCut, AnotherSceneIsOne) {
  EXPECT_TRUE(is_other_scene(image_of(turned(0)), image_of(turned(100))));
  EXPECT_TRUE(is_other_scene(image_of(turned(-60)), image_of(turned(60))));
}

}  // namespace
}  // namespace biseam::test
