#include "ring/light/matching.hpp"

#include <gtest/gtest.h>

namespace biseam::test {
namespace {

using namespace ring;

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

}  // namespace
}  // namespace biseam::test
