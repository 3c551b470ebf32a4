#include "scene/shooting.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <numbers>

namespace biseam::scene {
namespace {

Rig small_rig() {
  return {
      .panorama_width = 128, .fisheye_size = 64, .field_of_view = 195 * std::numbers::pi / 180, .baseline = 0.05, .seed = 7};
}

double mean(const tool::Rgb& picture) {
  double sum = 0;
  for (const std::uint8_t code : picture.bytes) sum += code;
  return sum / double(picture.bytes.size());
}

std::size_t count_equal(const tool::Rgb& a, const tool::Rgb& b) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.bytes.size(); ++i) count += a.bytes[i] == b.bytes[i];
  return count;
}

TEST(Shooting, PicturesHaveTheRigsSizesAndTheLastHoldsBothLenses) {
  Shooting shooting(small_rig());
  const Pictures all = shooting.take(0, 0);
  const tool::Size sizes[4] = {{128, 64}, {64, 64}, {64, 64}, {128, 64}};
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_EQ(all[k].width, sizes[k].width);
    EXPECT_EQ(all[k].height, sizes[k].height);
    ASSERT_EQ(all[k].bytes.size(), std::size_t(3 * sizes[k].width * sizes[k].height));
  }
  for (std::size_t y = 0; y < 64; ++y) {
    const auto row = all[3].bytes.begin() + std::ptrdiff_t(y * 384);
    EXPECT_TRUE(std::equal(row, row + 192, all[1].bytes.begin() + std::ptrdiff_t(y * 192)));
    EXPECT_TRUE(std::equal(row + 192, row + 384, all[2].bytes.begin() + std::ptrdiff_t(y * 192)));
  }
  EXPECT_NE(all[1].bytes, all[2].bytes);
}

TEST(Shooting, ShowsWhatIsRenderedAndDeveloped) {
  Rig rig = small_rig();
  rig.light.exposure = 0.5;
  rig.noise = 2;
  Shooting shooting(rig);
  const Pictures all = shooting.take(3, 0.4);
  Place place;
  place.go_to(0.4);
  EXPECT_EQ(all[0].bytes, develop(render(place, view_of(PanoramaView{128, 64})), {}));
  for (const int index : {0, 1}) {
    const Fisheye lens = Fisheye::fitting(index, 64, rig.field_of_view);
    EXPECT_EQ(shooting.lens(index).lens().p, lens.lens().p);
    EXPECT_EQ(shooting.lens(index).pupil(0.05).z, index == 0 ? 0.025 : -0.025);
    const std::vector<std::uint8_t> quiet =
        develop(render(place, view_of(lens, 0.05)), {Vec3{1, 1, 1} * std::exp2(index == 0 ? 0.25 : -0.25), 0, 0});
    const tool::Rgb& taken = all[std::size_t(1 + index)];
    double sum = 0, squares = 0, count = 0;
    for (std::size_t i = 0; i < quiet.size(); ++i) {
      if (quiet[i] < 20 || quiet[i] > 235) continue;  // noise is cut off there
      const double off = double(taken.bytes[i]) - quiet[i];
      sum += off, squares += off * off, ++count;
    }
    EXPECT_NEAR(sum / count, 0, 6 * 2 / std::sqrt(count));
    EXPECT_NEAR(squares / count, 4 + 1.0 / 6, 6 * 4 * std::sqrt(2 / count)) << "both are rounded";
  }
}

TEST(Shooting, IsTheSameWhateverWasTakenBefore) {
  Rig rig = small_rig();
  rig.noise = 3;
  Shooting shooting(rig), other(rig);
  const Pictures first = shooting.take(2, 0.7);
  shooting.take(5, 3.1);
  const Pictures again = shooting.take(2, 0.7), anew = other.take(2, 0.7);
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_EQ(again[k].bytes, first[k].bytes) << kPictureNames[k];
    EXPECT_EQ(anew[k].bytes, first[k].bytes) << kPictureNames[k];
  }
}

TEST(Shooting, NoiseIsAnotherOneInEveryFrameLensAndSeedAndNoneInTheTruth) {
  Rig rig = small_rig();
  rig.noise = 8;
  Shooting shooting(rig);
  const Pictures first = shooting.take(0, 0), next = shooting.take(1, 0);
  rig.seed = 8;
  Shooting reseeded(rig);
  const Pictures other = reseeded.take(0, 0);
  EXPECT_EQ(next[0].bytes, first[0].bytes);
  EXPECT_EQ(other[0].bytes, first[0].bytes);
  for (const std::size_t k : {std::size_t(1), std::size_t(2)}) {
    const std::size_t most = first[k].bytes.size() / 2;  // the black corners stay black half of the time
    EXPECT_LT(count_equal(first[k], next[k]), most);
    EXPECT_LT(count_equal(first[k], other[k]), most);
  }
}

TEST(Shooting, ADifferenceOfExposureIsSharedByBothLenses) {
  Rig rig = small_rig();
  Shooting even(rig);
  rig.light.exposure = 1;
  Shooting uneven(rig);
  const Pictures same = even.take(0, 0), other = uneven.take(0, 0);
  EXPECT_EQ(other[0].bytes, same[0].bytes);
  EXPECT_GT(mean(other[1]), mean(same[1]) + 5);
  EXPECT_LT(mean(other[2]), mean(same[2]) - 5);
}

TEST(Shooting, DifferencesOfLightBeginAtTheirFrameAndAreNoneInTheTruth) {
  Rig rig = small_rig();
  Shooting even(rig);
  rig.light = {.exposure = 1, .drift = 0, .temperature = 500, .vignette = 0.2, .flare = 0.1, .from = 4};
  Shooting uneven(rig);
  const Pictures plain = even.take(3, 0.1), before = uneven.take(3, 0.1), after = uneven.take(4, 0.1);
  for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(before[k].bytes, plain[k].bytes) << kPictureNames[k];
  EXPECT_EQ(after[0].bytes, plain[0].bytes);
  EXPECT_GT(mean(after[1]), mean(plain[1]) + 5);
  EXPECT_LT(mean(after[2]), mean(plain[2]) - 5);
}

// What a camera that is turned shows at its middle, one that is not shows aside.
TEST(Shooting, TurnsEverythingTogether) {
  Rig rig = small_rig();
  Shooting still(rig);
  rig.motion.turn = 45;
  Shooting turning(rig);
  const Pictures first = still.take(2, 0.1), turned = turning.take(2, 0.1), start = turning.take(0, 0.1);
  for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(start[k].bytes, first[k].bytes) << kPictureNames[k];
  int near = 0, count = 0;
  for (std::size_t y = 0; y < 64; ++y) {
    for (std::size_t x = 0; x < 3 * 128; ++x, ++count) {
      const int there = turned[0].bytes[y * 384 + x], here = first[0].bytes[y * 384 + (x + 3 * 32) % 384];
      near += std::abs(there - here) < 8;
    }
  }
  EXPECT_GT(near, 0.9 * count) << "a quarter to the right";
  EXPECT_NE(turned[1].bytes, first[1].bytes);
  EXPECT_NE(turned[2].bytes, first[2].bytes);
}

}  // namespace
}  // namespace biseam::scene
