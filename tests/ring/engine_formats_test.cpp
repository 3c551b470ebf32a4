// Every format and way of lying in memory, every thread count and instruction set: the same samples.
#include <gtest/gtest.h>

#include "ring/engine_fixture.hpp"
#include "support/isas.hpp"

namespace biseam::test {
namespace {

using ring::EngineConfig;
using ring::SeamMode;

constexpr Turn kTurn = {33, 21, 12};

// Samples that don't fill their range, so that formats of more bits can hold multiples of them.
int sample(int lens, int channel, int x, int y) { return static_cast<int>(std::lround(waves(lens, channel, x, y))); }

class EveryFormat : public testing::TestWithParam<TestFormat> {
 protected:
  int shift() const { return GetParam().bits - 8; }
};

// The samples of one channel alone, as a gray picture of the same positions.
TEST_P(EveryFormat, ShowsEveryFullChannelAsItsBrightnessAlone) {
  const TestFormat& format = GetParam();
  EngineConfig config = small_config(format.code);
  config.seam = SeamMode::middle;  // a searched one depends on all channels
  Fisheyes fisheyes(config, [&](int k, int c, int x, int y) { return sample(k, c, x, y) << shift(); });
  const OwnPicture panorama = stitch_once(config, fisheyes, kTurn);
  EngineConfig alone = config;
  alone.format = format.bits == 8 ? BISEAM_GRAY8 : format.bits == 10 ? BISEAM_GBRP10 : BISEAM_GBRP12;
  for (int c = 0; c < (format.subsampled() ? 1 : format.channels()); ++c) {
    Fisheyes gray(alone, [&](int k, int, int x, int y) { return sample(k, c, x, y) << shift(); });
    EXPECT_EQ(panorama.channel(c), stitch_once(alone, gray, kTurn).channel(0)) << "channel " << c;
  }
}

TEST_P(EveryFormat, GivesTheSamplesOfThePlanarOne) {
  const TestFormat& format = GetParam();
  if (format.channels() == 1) return;
  const auto is_planar_kin = [&](const TestFormat& other) {
    return other.layout == TestFormat::planar && other.sub_x == format.sub_x && other.sub_y == format.sub_y &&
           other.bits == format.bits;
  };
  const TestFormat& planar = *std::find_if(std::begin(kTestFormats), std::end(kTestFormats), is_planar_kin);
  for (const int siting : {BISEAM_SITING_LEFT, BISEAM_SITING_MIDDLE, BISEAM_SITING_TOP_LEFT}) {
    const EngineConfig config = small_config(format.code), as_planes = small_config(planar.code);
    Fisheyes one(config, noise_of(format.bits), {}, siting), other(as_planes, noise_of(format.bits), {}, siting);
    const OwnPicture a = OwnEngine(config).stitch(one, kTurn, {}, siting);
    const OwnPicture b = OwnEngine(as_planes).stitch(other, kTurn, {}, siting);
    for (int c = 0; c < 3; ++c) ASSERT_EQ(a.channel(c), b.channel(c)) << planar.name << ", channel " << c;
  }
}

// Formats of more bits are nothing but finer.
TEST_P(EveryFormat, IsWithinItsRoundingOfTheOneOf8Bits) {
  const TestFormat& format = GetParam();
  if (format.bits == 8) return;
  EngineConfig config = small_config(format.code);
  config.seam = SeamMode::middle;
  EngineConfig coarse = config;
  coarse.format = format.sub_y == 2 ? BISEAM_I420 : format.sub_x == 2 ? BISEAM_I422 : BISEAM_I444;
  Fisheyes fine(config, [&](int k, int c, int x, int y) { return sample(k, c, x, y) << shift(); });
  Fisheyes plain(coarse, sample);
  const OwnPicture a = stitch_once(config, fine, kTurn), b = stitch_once(coarse, plain, kTurn);
  const double one = 1 << shift();
  for (int c = 0; c < format.channels(); ++c) {
    for (int y = 0; y < a.rows(c); ++y) {
      for (int x = 0; x < a.columns(c); ++x) {
        // Half a code of either, and what sums and strips are rounded to, some 1/64 of a code of 8 bits.
        ASSERT_NEAR(a.get(c, x, y) / one, b.get(c, x, y), 0.5 + 0.5 / one + 0.08) << c << " at " << x << ", " << y;
      }
    }
  }
}

// Odd pictures, whose chroma has a last row and column of its own; what lies around samples is neither read nor written.
TEST_P(EveryFormat, LiesInMemoryInAnyWay) {
  const TestFormat& format = GetParam();
  EngineConfig config = small_config(format.code);
  config.width = 200;  // no whole blocks
  config.height = 82;
  for (Lens& lens : config.camera.lens) {
    lens.width = 163;
    lens.height = 161;
  }
  OwnEngine engine(config);
  Fisheyes plain(config, noise_of(format.bits));
  const std::vector<uint8_t> expected = engine.stitch(plain, kTurn).bytes();
  for (const RowLayout layout : {RowLayout{7, false, 0xFF}, RowLayout{0, true, 0x00}, RowLayout{64, true, 0x5A}}) {
    Fisheyes fisheyes(config, noise_of(format.bits), layout);
    EXPECT_EQ(engine.stitch(fisheyes, kTurn, layout).bytes(), expected);
    EXPECT_EQ(engine.stitch(plain, kTurn, layout).bytes(), expected);
    for (const OwnPicture& picture : fisheyes.lens) EXPECT_TRUE(picture.surroundings_untouched());
  }
}

TEST_P(EveryFormat, IsTheSameForEveryInstructionSet) {
  const TestFormat& format = GetParam();
  for (const ring::Quality quality : {ring::Quality::fast, ring::Quality::good, ring::Quality::best}) {
    EngineConfig config = small_config(format.code);
    config.quality = quality;
    Fisheyes fisheyes(config, noise_of(format.bits));
    const Isa before = isa_in_use();
    ASSERT_TRUE(limit_isa(Isa::scalar));
    const std::vector<uint8_t> expected = stitch_once(config, fisheyes, kTurn).bytes();
    for (const Isa isa : isas_here()) {
      if (isa == Isa::scalar) continue;
      ASSERT_TRUE(limit_isa(isa));
      ASSERT_EQ(stitch_once(config, fisheyes, kTurn).bytes(), expected) << name_of(isa);
    }
    limit_isa(before);
  }
}

TEST_P(EveryFormat, IsTheSameForEveryThreadCount) {
  const TestFormat& format = GetParam();
  for (const ring::Quality quality : {ring::Quality::fast, ring::Quality::good, ring::Quality::best}) {
    EngineConfig config = small_config(format.code);
    config.quality = quality;
    Fisheyes fisheyes(config, noise_of(format.bits));
    const std::vector<uint8_t> expected = stitch_once(config, fisheyes, kTurn).bytes();
    for (const int threads : {2, 3, 5, 16}) {
      config.threads = threads;
      OwnEngine engine(config);
      for (int frame = 0; frame < 3; ++frame) ASSERT_EQ(engine.stitch(fisheyes, kTurn).bytes(), expected) << threads;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, EveryFormat, testing::ValuesIn(kTestFormats), format_name);

TEST(Threads, AnyNumberGivesTheSameBytes) {
  EngineConfig config = small_config();
  Fisheyes fisheyes(config, noise_of(8));
  const std::vector<uint8_t> expected = stitch_once(config, fisheyes, kTurn).bytes();
  for (config.threads = 2; config.threads <= 16; ++config.threads) {
    OwnEngine engine(config);
    for (const Turn& turn : {Turn{0, 0, 0}, kTurn}) {
      const std::vector<uint8_t> bytes = engine.stitch(fisheyes, turn).bytes();
      if (turn.yaw != 0) {
        ASSERT_EQ(bytes, expected) << config.threads;
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
