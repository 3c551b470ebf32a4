#include "stages/blend/pyramid.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "biseam/biseam.h"
#include "support/blend_formulas.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kOld = -777;

// Pre-sized levels and top over exact blocks.
class LevelSet {
 public:
  LevelSet(int width, int height, int level_count, int32_t value = kOld) {
    images_.reserve(level_count + 1);
    for (int k = 0; k <= level_count; ++k) {
      images_.emplace_back(width, height, 3, value);
      width = half_up(width);
      height = half_up(height);
    }
    for (int k = 0; k < level_count; ++k) records_.push_back(*images_[k]);
    first_ = records_.data();
  }

  BlendImage** levels() { return &first_; }
  BlendImage* top() { return images_.back().record(); }
  TestImage& level(int k) { return images_[k]; }
  TestImage& top_image() { return images_.back(); }
  int count() const { return static_cast<int>(records_.size()); }

 private:
  std::vector<TestImage> images_;
  std::vector<BlendImage> records_;
  BlendImage* first_;
};

void expect_equal(const TestPyramid& expected, LevelSet& levels) {
  for (int k = 0; k < levels.count(); ++k) ASSERT_EQ(expected.levels[k].samples(), levels.level(k).samples()) << "level " << k;
  ASSERT_EQ(expected.top.samples(), levels.top_image().samples());
}

// All sizes down to one pixel, both parities, and more levels than there are halves.
struct Shape {
  int width, height, level_count;
};
const Shape kShapes[] = {{8, 8, 1},  {33, 9, 3}, {32, 24, 3}, {16, 16, 4}, {7, 5, 2},   {1, 1, 2}, {2, 2, 2}, {6, 40, 5},
                         {12, 1, 3}, {1, 12, 3}, {3, 3, 6},   {96, 10, 5}, {10, 31, 2}, {4, 4, 2}, {5, 6, 1}, {64, 2, 3}};

TEST(BuildLaplacianPyramid, LevelsAreDifferencesAndTheTopIsTheLastReduction) {
  RandomSource random;
  for (const Shape& shape : kShapes) {
    TestImage image(shape.width, shape.height);
    image.randomize(random, 0, 255);
    const TestImage before = image;
    LevelSet levels(shape.width, shape.height, shape.level_count);
    BuildLaplacianPyramid(image.record(), levels.levels(), levels.top(), shape.level_count);
    SCOPED_TRACE(testing::Message() << shape.width << " x " << shape.height << ", " << shape.level_count);
    expect_equal(laplacian_of(image, shape.level_count), levels);
    EXPECT_EQ(before.samples(), image.samples());
  }
}

TEST(BuildGuassPyramid, LevelsAreReductionsAndTheTopIsTheLastOne) {
  RandomSource random;
  for (const Shape& shape : kShapes) {
    TestImage image(shape.width, shape.height);
    image.randomize(random, 0, 64);
    LevelSet levels(shape.width, shape.height, shape.level_count, 0);
    BuildGuassPyramid(image.record(), levels.levels(), levels.top(), shape.level_count);
    SCOPED_TRACE(testing::Message() << shape.width << " x " << shape.height << ", " << shape.level_count);
    expect_equal(gaussian_of(image, shape.level_count), levels);
  }
}

TEST(BuildGuassPyramid, LevelThatCanNotBeReducedKeepsWhatItHeld) {
  TestImage image(2, 8, 3, 64);
  LevelSet levels(2, 8, 2);
  BuildGuassPyramid(image.record(), levels.levels(), levels.top(), 2);
  EXPECT_EQ(TestImage(1, 4, 3, kOld).samples(), levels.level(1).samples());
  // A top in the same place comes out zero.
  LevelSet low(2, 8, 1);
  BuildGuassPyramid(image.record(), low.levels(), low.top(), 1);
  EXPECT_EQ(TestImage(1, 4).samples(), low.top_image().samples());
}

TEST(BuildLaplacianPyramid, OneLevelHasFullSizeAndAHalfSizeTop) {
  RandomSource random;
  TestImage image(12, 8);
  image.randomize(random, 0, 255);
  LevelSet levels(12, 8, 1);
  BuildLaplacianPyramid(image.record(), levels.levels(), levels.top(), 1);
  EXPECT_EQ(reduced(image, 6, 4).samples(), levels.top_image().samples());
  const TestImage up = expanded(reduced(image, 6, 4), 12, 8);
  for (size_t i = 0; i < up.samples().size(); ++i) {
    EXPECT_EQ(image.samples()[i] - up.samples()[i], levels.level(0).samples()[i]);
  }
}

TEST(BuildLaplacianPyramid, OddBandWidthIsExpandedByTheBorderRoutine) {
  RandomSource random;
  TestImage image(33, 8), down(17, 4), up(33, 8);
  image.randomize(random, 0, 255);
  LevelSet levels(33, 8, 1);
  BuildLaplacianPyramid(image.record(), levels.levels(), levels.top(), 1);
  ASSERT_EQ(0, PyrDownBorder(image.record(), down.record()));
  EXPECT_EQ(-1, PyrUpNormal(down.record(), up.record()));
  ASSERT_EQ(0, PyrUpBorder(down.record(), up.record()));
  EXPECT_EQ(down.samples(), levels.top_image().samples());
  for (size_t i = 0; i < up.samples().size(); ++i) {
    EXPECT_EQ(image.samples()[i] - up.samples()[i], levels.level(0).samples()[i]);
  }
}

TEST(BuildLaplacianPyramid, PaddedImageCountsAsOneRunOfSamples) {
  RandomSource random;
  TestImage padded(9, 5), packed(6, 5);
  padded.randomize(random, 0, 255);
  std::copy_n(padded.samples().begin(), packed.samples().size(), packed.samples().begin());
  BlendImage record = *padded;
  record.width = 6;
  LevelSet levels(6, 5, 2);
  BuildLaplacianPyramid(&record, levels.levels(), levels.top(), 2);
  expect_equal(laplacian_of(packed, 2), levels);
}

TEST(BuildLaplacianPyramid, LargerTopIsWrittenAsFarAsTheReductionReaches) {
  RandomSource random;
  TestImage image(6, 8), top(5, 5, 3, kOld);
  image.randomize(random, 0, 255);
  LevelSet levels(6, 8, 1);
  BuildLaplacianPyramid(image.record(), levels.levels(), top.record(), 1);
  std::vector<int32_t> expected = laplacian_of(image, 1).top.samples();
  expected.resize(75, kOld);
  EXPECT_EQ(expected, top.samples());
}

TEST(BuildGuassPyramid, LargerTopIsWrittenAsFarAsTheReductionReaches) {
  RandomSource random;
  TestImage image(6, 8), top(5, 5, 3, kOld);
  image.randomize(random, 0, 64);
  LevelSet levels(6, 8, 1);
  BuildGuassPyramid(image.record(), levels.levels(), top.record(), 1);
  std::vector<int32_t> expected = gaussian_of(image, 1).top.samples();
  expected.resize(75, kOld);
  EXPECT_EQ(expected, top.samples());
}

TEST(PyramidSizes, OddBandWidthIsHalvedRoundingUp) {
  EXPECT_EQ(17, next_size(33));
  EXPECT_EQ(9, next_size(17));
  EXPECT_EQ(1, next_size(1));
  EXPECT_EQ(0, next_size(0));
  EXPECT_EQ(0, next_size(-1));
  EXPECT_EQ(1 << 30, next_size(INT32_MAX));
}

TEST(BuildGuassPyramid, WithoutLevelsCopiesTheImageToLevelZero) {
  for (int level_count : {0, -1, INT32_MIN}) {
    TestImage image(6, 7), top(3, 4, 3, kOld), level(6, 7, 3, kOld);
    RandomSource random;
    image.randomize(random, -1000, 1000);
    BlendImage* levels = level.record();
    BuildGuassPyramid(image.record(), &levels, top.record(), level_count);
    EXPECT_EQ(image.samples(), level.samples());
    EXPECT_EQ(TestImage(3, 4, 3, kOld).samples(), top.samples());
  }
}

TEST(Pyramids, WithoutLevelRecordsNothingIsWritten) {
  for (int level_count : {0, -1, INT32_MIN}) {
    TestImage image(6, 6, 3, 5), top(6, 6, 3, kOld);
    BlendImage* none = nullptr;
    BuildLaplacianPyramid(image.record(), &none, top.record(), level_count);
    BuildGuassPyramid(image.record(), &none, top.record(), level_count);
    EXPECT_EQ(TestImage(6, 6, 3, kOld).samples(), top.samples());
  }
}

TEST(ReconstructImage, WithoutLevelsCopiesTheTop) {
  TestImage top(6, 6, 3, 5), out(6, 6);
  BlendImage* none = nullptr;
  ReconstructImage(top.record(), &none, out.record(), 0);
  EXPECT_EQ(top.samples(), out.samples());
}

TEST(ReconstructImage, CollapsesWhatWasDecomposed) {
  RandomSource random;
  for (const Shape& shape : kShapes) {
    TestImage image(shape.width, shape.height), out(shape.width, shape.height, 3, kOld);
    image.randomize(random, -4000, 4000);
    LevelSet levels(shape.width, shape.height, shape.level_count);
    BuildLaplacianPyramid(image.record(), levels.levels(), levels.top(), shape.level_count);
    ReconstructImage(levels.top(), levels.levels(), out.record(), shape.level_count);
    EXPECT_EQ(image.samples(), out.samples()) << shape.width << " x " << shape.height << ", " << shape.level_count;
  }
}

TEST(ReconstructImage, AnyPyramidIsExpandedAndAddedAndStaysAsItIs) {
  RandomSource random;
  for (const Shape& shape : kShapes) {
    LevelSet levels(shape.width, shape.height, shape.level_count);
    TestPyramid expected;
    for (int k = 0; k < shape.level_count; ++k) expected.levels.push_back(levels.level(k).randomize(random, -9999, 9999));
    expected.top = levels.top_image().randomize(random, -9999, 9999);
    TestImage out(shape.width, shape.height, 3, kOld);
    ReconstructImage(levels.top(), levels.levels(), out.record(), shape.level_count);
    EXPECT_EQ(collapsed(expected).samples(), out.samples()) << shape.width << " x " << shape.height;
    expect_equal(expected, levels);
  }
}

TEST(ReconstructImage, PaddedTopCountsAsOneRunOfSamples) {
  RandomSource random;
  TestImage padded(9, 5), out(12, 10);
  padded.randomize(random, -99, 99);
  TestPyramid expected{.levels = {TestImage(12, 10)}, .top = TestImage(6, 5)};
  std::copy_n(padded.samples().begin(), expected.top.samples().size(), expected.top.samples().begin());
  BlendImage record = *padded, level = *expected.levels[0], *levels = &level;
  record.width = 6;
  ReconstructImage(&record, &levels, out.record(), 1);
  EXPECT_EQ(collapsed(expected).samples(), out.samples());
}

TEST(ReconstructImage, LargerOutputIsWrittenAsFarAsTheBandReaches) {
  RandomSource random;
  for (int level_count : {0, 1}) {
    LevelSet levels(6, 8, level_count);
    TestPyramid pyramid;
    for (int k = 0; k < level_count; ++k) pyramid.levels.push_back(levels.level(k).randomize(random, -99, 99));
    pyramid.top = levels.top_image().randomize(random, -99, 99);
    TestImage out(9, 8, 3, kOld);
    ReconstructImage(levels.top(), levels.levels(), out.record(), level_count);
    std::vector<int32_t> expected = collapsed(pyramid).samples();
    expected.resize(out.samples().size(), kOld);
    EXPECT_EQ(expected, out.samples());
  }
}

TEST(BlendLapPyrs, EveryLevelIsMixedAndTheSourcesAreOverwritten) {
  RandomSource random;
  LevelSet a(19, 6, 3), b(19, 6, 3), mask(19, 6, 3), out(19, 6, 3);
  std::vector<TestImage> before_a, before_b;
  for (int k = 0; k <= 3; ++k) {
    before_a.push_back(a.level(k).randomize(random, -300, 300));
    before_b.push_back(b.level(k).randomize(random, -300, 300));
    mask.level(k).randomize(random, 0, 64);
  }
  BlendLapPyrs(a.levels(), a.top(), b.levels(), b.top(), mask.levels(), mask.top(), out.levels(), out.top(), 3);
  for (int k = 0; k <= 3; ++k) {
    EXPECT_EQ(mixed(before_a[k], before_b[k], mask.level(k)).samples(), out.level(k).samples());
    for (size_t i = 0; i < before_a[k].samples().size(); ++i) {
      const int32_t weight = mask.level(k).samples()[i];
      EXPECT_EQ(before_a[k].samples()[i] * weight, a.level(k).samples()[i]);
      EXPECT_EQ(before_b[k].samples()[i] * (64 - weight), b.level(k).samples()[i]);
    }
  }
}

TEST(BlendLapPyrs, FullAndEmptyMasksLeaveOneSourceTimes64) {
  RandomSource random;
  for (int weight : {64, 0}) {
    TestImage images[2] = {TestImage(33, 12), TestImage(33, 12)};
    LevelSet sources[2] = {LevelSet(33, 12, 3), LevelSet(33, 12, 3)};
    for (int i = 0; i < 2; ++i) {
      images[i].randomize(random, 0, 255);
      BuildLaplacianPyramid(images[i].record(), sources[i].levels(), sources[i].top(), 3);
    }
    const TestPyramid alone = laplacian_of(images[weight == 64 ? 0 : 1], 3);
    TestImage mask_image(33, 12, 3, weight), result(33, 12);
    LevelSet mask(33, 12, 3), out(33, 12, 3);
    BuildGuassPyramid(mask_image.record(), mask.levels(), mask.top(), 3);
    BlendLapPyrs(sources[0].levels(), sources[0].top(), sources[1].levels(), sources[1].top(), mask.levels(), mask.top(),
                 out.levels(), out.top(), 3);
    for (int k = 0; k <= 3; ++k) {
      const TestImage& level = k < 3 ? alone.levels[k] : alone.top;
      for (size_t i = 0; i < level.samples().size(); ++i) EXPECT_EQ(64 * level.samples()[i], out.level(k).samples()[i]);
    }
    ReconstructImage(out.top(), out.levels(), result.record(), 3);
    // Rounding took place before the factor came in: the band is 64 times the source within half a unit a level.
    const TestImage& source = images[weight == 64 ? 0 : 1];
    for (size_t i = 0; i < result.samples().size(); ++i) EXPECT_NEAR(64 * source.samples()[i], result.samples()[i], 3 * 32);
    TestPyramid scaled = alone;
    for (TestImage& level : scaled.levels) {
      for (int32_t& sample : level.samples()) sample *= 64;
    }
    for (int32_t& sample : scaled.top.samples()) sample *= 64;
    EXPECT_EQ(collapsed(scaled).samples(), result.samples());
  }
}

TEST(CreatBlendBuildLaplacianPyramid, WidensThenDecomposes) {
  RandomSource random;
  for (int side : {0, 1}) {
    TestImage source(10, 6), band(14, 6), expected_band(14, 6);
    source.randomize(random, 0, 255);
    LevelSet levels(14, 6, 2);
    PyramidTaskArgs args{source.record(), band.record(), 4, side, band.record(), levels.levels(), levels.top(), 2};
    EXPECT_EQ(nullptr, CreatBlend_BuildLaplacianPyramid(&args));
    CreatBlend(source.record(), expected_band.record(), 4, side);
    EXPECT_EQ(expected_band.samples(), band.samples());
    expect_equal(laplacian_of(expected_band, 2), levels);
  }
}

}  // namespace
}  // namespace biseam::test
