#include "ring/near/displacement.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

constexpr StripShape kStrip{960, 56};

struct Own {
  NearShape shape;
  NearMemory memory{};
  std::unique_ptr<Displacement> displacement = std::make_unique<Displacement>();

  explicit Own(StripShape strip = kStrip, int span = 4) : shape(near_shape(strip)) { memory.span = span; }
  // Of search rows [first, end), in samples; 0 elsewhere.
  void frame(int first, int end, double disparity) {
    std::vector<int16_t> disparities(static_cast<std::size_t>(shape.length), 0);
    for (int t = first; t < end; ++t)
      disparities[static_cast<std::size_t>(t)] = static_cast<int16_t>(std::lround(disparity * kDisparityOne));
    remember(shape, disparities.data(), memory);
    displace(shape, memory, *displacement);
  }
  double at(int t) const { return displacement->values[t] / 65536.0; }
};

TEST(Displacement, IsHalfTheDisparityAllOverTheThing) {
  Own own;
  own.frame(100, 180, 4.5);
  for (int t = 100; t < 180; ++t) ASSERT_NEAR(own.at(t), 2.25, 0.06) << t;
  EXPECT_EQ(own.at(150), 2.25);
  EXPECT_EQ(own.at(90), 0);
  EXPECT_EQ(own.at(190), 0);
  Own large({1920, 112});
  large.frame(100, 180, 4.5);
  EXPECT_EQ(large.at(300), 4.5) << "twice as many samples";
  EXPECT_EQ(large.at(500), 0);
}

TEST(Displacement, GoesRoundTheRing) {
  Own own;
  own.frame(950, 960, 6);
  EXPECT_GT(own.at(0), 2.5);
  EXPECT_EQ(own.at(960), own.at(0));
  EXPECT_EQ(own.at(20), 0);
  own = Own();
  own.frame(0, 10, 6);
  EXPECT_GT(own.at(959), 2.5);
}

TEST(Displacement, IsNeverSteeperThanItMayBe) {
  RandomSource random;
  for (const StripShape strip : {kStrip, {480, 28}, {1920, 112}, {4096, 238}}) {
    Own own(strip);
    std::vector<int16_t> disparities(static_cast<std::size_t>(own.shape.length));
    for (int16_t& d : disparities)
      d = static_cast<int16_t>(random.between(0, 9) == 0 ? random.between(0, 12 * kDisparityOne) : 0);
    remember(own.shape, disparities.data(), own.memory);
    displace(own.shape, own.memory, *own.displacement);
    for (int t = 0; t < strip.length; ++t) ASSERT_LE(std::abs(own.at(t + 1) - own.at(t)), kSteepest + 0.01) << t;
  }
}

TEST(Displacement, MovesNoFasterThanTheSpanAllows) {
  RandomSource random;
  Own own;
  for (int i = 0; i < 4; ++i) own.frame(0, 0, 0);
  double last[960] = {};
  for (int frame = 0; frame < 40; ++frame) {
    const int first = random.between(0, 900);
    own.frame(first, first + 60, random.real_between(0, 12));
    if (!own.displacement->any) continue;
    for (int t = 0; t < 960; ++t) {
      ASSERT_LE(std::abs(own.at(t) - last[t]), 12 / 2.0 / 4 + 0.01);
      last[t] = own.at(t);
    }
  }
}

TEST(Displacement, AFirstFrameCountsAtOnceAndAStillSceneStaysStill) {
  Own own;
  own.frame(100, 180, 4);
  EXPECT_EQ(own.at(140), 2);
  for (int i = 0; i < 6; ++i) own.frame(100, 180, 4);
  EXPECT_EQ(own.at(140), 2);
  for (int i = 0; i < 4; ++i) own.frame(0, 0, 0);
  EXPECT_FALSE(own.displacement->any) << "a span later it is gone";
}

// What was before a span has no effect.
TEST(Displacement, RemembersNoMoreThanItsSpan) {
  Own own, other;
  for (int i = 0; i < 7; ++i) own.frame(300, 500, i);
  for (int i = 0; i < 4; ++i) own.frame(100, 180, 2 + i), other.frame(100, 180, 2 + i);
  EXPECT_EQ(std::memcmp(own.displacement->values, other.displacement->values, sizeof(int32_t) * 961), 0);
  forget(own.memory);
  own.frame(10, 40, 1);
  EXPECT_EQ(own.at(20), 0.5);
}

TEST(NearSpan, IsAnEighthOfASecond) {
  EXPECT_EQ(near_span(30), 4);
  EXPECT_EQ(near_span(24), 3);
  EXPECT_EQ(near_span(60), 8);
  EXPECT_EQ(near_span(1000), 8);
  EXPECT_EQ(near_span(1), 1);
  EXPECT_EQ(near_span(NAN), 1);
}

TEST(NearMemory, FromOutsideIsChecked) {
  Own own;
  for (int i = 0; i < 3; ++i) own.frame(100, 180, 4.5);
  const auto valid = [&](auto&& change) {
    NearMemory memory = own.memory;
    change(memory);
    return is_valid(memory, own.shape, 4);
  };
  EXPECT_TRUE(valid([](NearMemory&) {}));
  EXPECT_FALSE(valid([](NearMemory& m) { m.span = 5; }));
  EXPECT_FALSE(valid([](NearMemory& m) { m.filled = 5; }));
  EXPECT_FALSE(valid([](NearMemory& m) { m.filled = -1; }));
  EXPECT_FALSE(valid([](NearMemory& m) { m.next = 4; }));
  EXPECT_FALSE(valid([](NearMemory& m) { m.next = 1; }));
  EXPECT_FALSE(valid([](NearMemory& m) { m.frames[2][959] = -1; }));
  const auto most = static_cast<int16_t>(most_disparity(own.shape));
  EXPECT_TRUE(valid([most](NearMemory& m) { m.frames[0][0] = most; }));
  EXPECT_FALSE(valid([most](NearMemory& m) { m.frames[0][0] = static_cast<int16_t>(most + 1); }));
  EXPECT_TRUE(valid([](NearMemory& m) { m.frames[3][0] = -1; })) << "no frame yet";
}

}  // namespace
}  // namespace biseam::test
