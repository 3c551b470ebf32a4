#include "ring/light/tone.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "ring/lit_scene.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

TEST(Tone, LogsAreOfTheDistanceFromThePivot) {
  for (const Transfer transfer : {Transfer::bt709, Transfer::srgb, Transfer::power, Transfer::log}) {
    for (const bool full : {false, true}) {
      const Tone tone = make_tone(transfer, false, full);
      LogTable table;
      fill_logs(tone, table);
      const double range = tone.white - tone.black;
      for (int level = 700; level <= tone.white - tone.black; level += 7) {
        const double exact = std::log2((level + tone.black - tone.pivot) / range);
        ASSERT_NEAR(table.at(level) / double(kLogOne), exact, 1.5 / kLogOne) << level;
      }
    }
  }
}

TEST(Tone, PowersAreThoseOfTwo) {
  for (int log = -8 * kLogOne; log <= 8 * kLogOne; log += 37) {
    ASSERT_NEAR(power_of(log) / std::exp2(log / double(kLogOne)), 1, 1e-9);
  }
}

TEST(Tone, UsualTransfersAreThoseOfTheKindOfPicture) {
  EXPECT_EQ(make_tone(Transfer::usual, false, false).pivot, make_tone(Transfer::bt709, false, false).pivot);
  EXPECT_EQ(make_tone(Transfer::usual, true, true).pivot, make_tone(Transfer::srgb, true, true).pivot);
  EXPECT_EQ(make_tone(Transfer::power, false, false).pivot, 16 << 6);
  EXPECT_EQ(make_tone(Transfer::power, true, true).white, 255 << 6);
}

}  // namespace
}  // namespace biseam::test
