#include "stages/seam/smooth.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "stages/seam/images.hpp"
#include "support/failing_heap.hpp"

namespace biseam::test {
namespace {

constexpr int32_t kUntouched = 7777;

std::vector<float> kernel_of(float sigma, int taps) {
  std::vector<float> kernel(static_cast<size_t>(taps));
  fill_flat_kernel(sigma, kernel.data(), taps);
  return kernel;
}

TEST(FillFlatKernel, IsFlatBecauseTheExponentsCoefficientIsZero) {
  for (const int taps : {1, 2, 3, 4, 5, 11, 12, 31}) {
    for (const float sigma : {0.25f, 1.0f, 1.5f, 9.0f}) {
      const float tap = static_cast<float>(1.0 / (static_cast<double>(sigma) * 2.5066282746310002));
      float sum = 0.0f;
      for (int i = 0; i < taps; ++i) sum += tap;
      const std::vector<float> expected(static_cast<size_t>(taps), tap / sum);
      const std::vector<float> kernel = kernel_of(sigma, taps);
      EXPECT_EQ(0, std::memcmp(kernel.data(), expected.data(), sizeof(float) * kernel.size())) << taps << " " << sigma;
      EXPECT_NEAR(kernel[0], 1.0 / taps, 1e-6);
    }
  }
}

TEST(FillFlatKernel, OfElevenTapsHasThisValue) {
  for (const float tap : kernel_of(1.5f, 11)) EXPECT_EQ(tap, 0x1.745d14p-4f);
}

TEST(FillFlatKernel, NoTapsWriteNothing) {
  float value = 3.0f;
  fill_flat_kernel(1.5f, &value, 0);
  fill_flat_kernel(1.5f, &value, -11);
  EXPECT_EQ(value, 3.0f);
}

// The definition pixel by pixel: only taps inside the image count.
std::vector<int32_t> plain_smooth(int width, int height, const std::vector<int32_t>& values, float sigma, int taps) {
  const float tap = static_cast<float>(1.0 / (static_cast<double>(sigma) * 2.5066282746310002));
  float sum = 0.0f;
  for (int i = 0; i < taps; ++i) sum += tap;
  const float weight = tap / sum;
  const int reach = taps / 2;
  std::vector<float> work;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      float above = 0.0f, below = 0.0f;
      for (int j = -reach; j <= reach; ++j) {
        if (x + j < 0 || x + j >= width) continue;
        above += weight * static_cast<float>(values[static_cast<size_t>(y * width + x + j)]);
        below += weight;
      }
      work.push_back(above / below);
    }
  }
  std::vector<int32_t> out;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      float above = 0.0f, below = 0.0f;
      for (int j = -reach; j <= reach; ++j) {
        if (y + j < 0 || y + j >= height) continue;
        above += weight * work[static_cast<size_t>((y + j) * width + x)];
        below += weight;
      }
      out.push_back(static_cast<int32_t>(std::trunc(above / below)));
    }
  }
  return out;
}

std::vector<int32_t> smoothed(int width, int height, const std::vector<int32_t>& values, float sigma, int taps) {
  ExactGray src(width, height, values);
  GuardedSamples out(int64_t{width} * height, kUntouched);
  BlendGray dst = gray_record(out.data(), width, height);
  EXPECT_EQ(smooth(src.record, dst, sigma, taps), Status::ok);
  return out.values();
}

TEST(Smooth, RandomImagesFollowTheDefinition) {
  const unsigned seed = 31011;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 200; ++round) {
    const int width = 1 + static_cast<int>(random() % 25);
    const int height = 1 + static_cast<int>(random() % 25);
    const int taps = 1 + 2 * static_cast<int>(random() % 9);
    const float sigma = 0.5f + static_cast<float>(random() % 8);
    std::vector<int32_t> values;
    for (int i = 0; i < width * height; ++i) values.push_back(static_cast<int32_t>(random() % 4096) - 1024);
    EXPECT_EQ(smoothed(width, height, values, sigma, taps), plain_smooth(width, height, values, sigma, taps))
        << width << " x " << height << ", " << taps;
  }
}

TEST(Smooth, SingleBrightSampleHasAMeanOfTenAndMoreAtTheBorder) {
  std::vector<int32_t> row(30, 0);
  row[15] = 110;
  std::vector<int32_t> expected(30, 0);
  for (size_t x = 10; x <= 20; ++x) expected[x] = 10;
  EXPECT_EQ(smoothed(30, 1, row, 1.5f, 11), expected);

  std::vector<int32_t> border(30, 0);
  border[0] = 110;
  expected.assign(30, 0);
  // 110 over 6, 7, 8, 9, 10, 11 neighbours, truncated
  const int32_t means[] = {18, 15, 13, 12, 11, 10};
  for (size_t x = 0; x < 6; ++x) expected[x] = means[x];
  EXPECT_EQ(smoothed(30, 1, border, 1.5f, 11), expected);
}

TEST(Smooth, OnePixelWideImageIsOnlySmoothedDown) {
  std::vector<int32_t> column(30, 0);
  column[15] = 110;
  std::vector<int32_t> expected(30, 0);
  for (size_t y = 10; y <= 20; ++y) expected[y] = 10;
  EXPECT_EQ(smoothed(1, 30, column, 1.5f, 11), expected);
}

TEST(Smooth, OneTapCopies) {
  const std::vector<int32_t> values{0, 1, -5, 255, 77777, 16777216};
  EXPECT_EQ(smoothed(3, 2, values, 1.5f, 1), values);
}

TEST(Smooth, TruncatesTowardZero) {
  EXPECT_EQ(smoothed(2, 1, {-3, 0}, 1.5f, 3), (std::vector<int32_t>{-1, -1}));
  EXPECT_EQ(smoothed(2, 1, {3, 0}, 1.5f, 3), (std::vector<int32_t>{1, 1}));
}

TEST(Smooth, ValuesBeyondIntegersSaturate) {
  constexpr int32_t top = std::numeric_limits<int32_t>::max();
  constexpr int32_t bottom = std::numeric_limits<int32_t>::min();
  EXPECT_EQ(smoothed(2, 1, {top, top}, 1.5f, 1), (std::vector<int32_t>{top, top}));
  EXPECT_EQ(smoothed(2, 1, {bottom, bottom}, 1.5f, 1), (std::vector<int32_t>{bottom, bottom}));
}

TEST(Smooth, EvenTapCountReachesFurtherLeftAndUp) {
  // Taps -2, -1, 0, 1 of four: what a fifth would add does not exist.
  EXPECT_EQ(smoothed(7, 1, {0, 0, 0, 120, 0, 0, 0}, 1.5f, 4), (std::vector<int32_t>{0, 0, 30, 30, 30, 30, 0}));
  EXPECT_EQ(smoothed(1, 7, {0, 0, 0, 120, 0, 0, 0}, 1.5f, 4), (std::vector<int32_t>{0, 0, 30, 30, 30, 30, 0}));
}

TEST(Smooth, NoTapsGiveZeros) {
  EXPECT_EQ(smoothed(3, 2, {1, 2, 3, 4, 5, 6}, 1.5f, 0), std::vector<int32_t>(6, 0));
  EXPECT_EQ(smoothed(3, 2, {1, 2, 3, 4, 5, 6}, 1.5f, -11), std::vector<int32_t>(6, 0));
}

TEST(Smooth, ZeroSigmaGivesZeros) { EXPECT_EQ(smoothed(2, 1, {5, 6}, 0.0f, 3), (std::vector<int32_t>{0, 0})); }

TEST(Smooth, WorksInPlace) {
  const std::vector<int32_t> values{9, 1, 4, 250, 3, 77, 12, 0, 5, 90, 14, 3};
  const std::vector<int32_t> expected = smoothed(4, 3, values, 1.5f, 3);
  ExactGray image(4, 3, values);
  ASSERT_EQ(smooth(image.record, image.record, 1.5f, 3), Status::ok);
  EXPECT_EQ(image.samples, expected);
}

TEST(Smooth, EmptyImagesDoNothing) {
  GuardedSamples out(4, kUntouched);
  const FailingHeap heap;
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {-3, 4}, {4, -3}, {-3, -4}}) {
    BlendGray dst = gray_record(out.data(), width, height);
    EXPECT_EQ(smooth(gray_record(nullptr, width, height), dst, 1.5f, 11), Status::ok);
  }
  EXPECT_EQ(heap.requests(), 0);
  EXPECT_EQ(out.values(), std::vector<int32_t>(4, kUntouched));
}

void say(const char* text) { std::fputs(text, stdout); }

std::string said_when_failing(int request) {
  ExactGray src(5, 4, std::vector<int32_t>(20, 9));
  GuardedSamples out(20, kUntouched);
  BlendGray dst = gray_record(out.data(), 5, 4);
  testing::internal::CaptureStdout();
  {
    const FailingHeap heap(request);
    EXPECT_EQ(smooth(src.record, dst, 1.5f, 11, say), Status::no_memory);
    EXPECT_EQ(heap.held(), 0);
  }
  std::string said = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.values(), std::vector<int32_t>(20, kUntouched));
  return said;
}

TEST(Smooth, MissingMemoryIsSaidWithoutANewLine) {
  EXPECT_EQ(said_when_failing(0), "melloc memory for pdTemp failed!!");
  EXPECT_EQ(said_when_failing(1), "malloc memory for pdKernel,failed!!");
}

TEST(Smooth, SizesBeyond31BitsCountAsMissingMemory) {
  BlendGray huge = gray_record(nullptr, 1 << 30, 1 << 30);
  testing::internal::CaptureStdout();
  const Status status = smooth(huge, huge, 1.5f, 11, say);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "melloc memory for pdTemp failed!!");
  EXPECT_EQ(status, Status::no_memory);
}

}  // namespace
}  // namespace biseam::test
