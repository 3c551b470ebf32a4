#include "ring/light/measure.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "ring/light/matching.hpp"
#include "ring/light/own_strips.hpp"

namespace biseam::test {
namespace {

using namespace ring;

constexpr StripShape kShape{480, 28};

double code_log(double light_ratio) { return 0.45 * std::log2(light_ratio); }

// A sector is a mean of samples whose noise is independent.  That of blue is the largest: 0.49 codes of luma and of chroma make
// 1.2 of 255, which on the scene's darkest, 76 codes above where the curve's power begins, is 0.023 of log2; the brighter lens
// adds half as much, so that both have 0.026.
TEST(MeasureSector, FindsExposureAndBalance) {
  constexpr double kNoise = 0.026;
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
        EXPECT_NEAR(sector.logs[c] / double(kLogOne), code_log(2 * kWarmer[c]), 5 * kNoise / std::sqrt(sector.count));
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

}  // namespace
}  // namespace biseam::test
