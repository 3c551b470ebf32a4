// What frames must do whatever they show.
#include "ring/engine.hpp"

#include <gtest/gtest.h>

#include "ring/engine_fixture.hpp"

namespace biseam::test {
namespace {

using ring::EngineConfig;

TEST(Frames, OfFlatPicturesAreFlat) {
  for (const TestFormat& format : kTestFormats) {
    for (const ring::Quality quality : {ring::Quality::fast, ring::Quality::good, ring::Quality::best}) {
      EngineConfig config = small_config(format.code);
      config.quality = quality;
      OwnEngine engine(config);
      for (const int level : {0, 1, format.highest() / 3, format.highest()}) {
        const auto value = [&](int channel) { return channel == 1 ? format.highest() - level : level; };
        Fisheyes fisheyes(config, [&](int, int channel, int, int) { return value(channel); });
        OwnPicture expected(format.code, config.width, config.height);
        expected.fill([&](int channel, int, int) { return value(channel); });
        ASSERT_EQ(engine.stitch(fisheyes, kTurns[1]).bytes(), expected.bytes()) << format.name << " " << level;
      }
    }
  }
}

TEST(Frames, DontDependOnThoseBefore) {
  const EngineConfig config = small_config();
  OwnEngine engine(config);
  Fisheyes fisheyes(config, waves_of(8)), others(config, noise_of(8)), middle(config, waves_of(8), {}, BISEAM_SITING_MIDDLE);
  const std::vector<uint8_t> first = engine.stitch(fisheyes).bytes();
  EXPECT_NE(engine.stitch(others, kTurns[1]).bytes(), first);
  EXPECT_NE(engine.stitch(middle).bytes(), first);
  EXPECT_EQ(engine.stitch(fisheyes).bytes(), first);
  EXPECT_EQ(stitch_once(config, middle).bytes(), engine.stitch(middle).bytes());
}

TEST(Frames, OfAFullTurnAreThoseOfNone) {
  const EngineConfig config = small_config();
  OwnEngine engine(config);
  Fisheyes fisheyes(config, noise_of(8));
  for (const Turn& turn : kTurns) {
    const std::vector<uint8_t> expected = engine.stitch(fisheyes, turn).bytes();
    for (const double full : {360.0, -360.0, 3600.0}) {
      EXPECT_EQ(engine.stitch(fisheyes, {turn.yaw + full, turn.pitch, turn.roll}).bytes(), expected);
      EXPECT_EQ(engine.stitch(fisheyes, {turn.yaw, turn.pitch + full, turn.roll - full}).bytes(), expected);
    }
  }
}

}  // namespace
}  // namespace biseam::test
