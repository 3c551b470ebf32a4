#include "stages/seam/detail.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "stages/seam/images.hpp"
#include "support/failing_heap.hpp"

namespace biseam::test {
namespace {

constexpr int32_t int_min = std::numeric_limits<int32_t>::min();
constexpr int32_t int_max = std::numeric_limits<int32_t>::max();
constexpr int32_t kUntouched = 7777;

int32_t gray_of(int32_t red, int32_t green, int32_t blue) {
  int32_t rgb[3] = {red, green, blue};
  int32_t result = kUntouched;
  const BlendImage src = color_record(rgb, 1, 1);
  BlendGray dst = gray_record(&result, 1, 1);
  to_gray(src, dst);
  return result;
}

TEST(ToGray, WhiteIs255) { EXPECT_EQ(gray_of(255, 255, 255), 255); }

TEST(ToGray, WeightsAreThoseOfRedGreenAndBlueInThisOrder) {
  EXPECT_EQ(gray_of(256, 0, 0), 76);
  EXPECT_EQ(gray_of(0, 256, 0), 150);
  EXPECT_EQ(gray_of(0, 0, 256), 30);
}

TEST(ToGray, RoundsDownAlsoBelowZero) {
  EXPECT_EQ(gray_of(3, 0, 0), 0);
  EXPECT_EQ(gray_of(-1, 0, 0), -1);
  EXPECT_EQ(gray_of(-256, 0, 0), -76);
}

TEST(ToGray, SumWrapsTo32Bits) {
  // 256 * int_max = -256 (mod 2^32)
  EXPECT_EQ(gray_of(int_max, int_max, int_max), -1);
  EXPECT_EQ(gray_of(int_min, int_min, int_min), 0);
}

TEST(ToGray, RandomSamplesFollowTheFormula) {
  const unsigned seed = 31001;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int i = 0; i < 2000; ++i) {
    const int32_t r = static_cast<int32_t>(random() % 1024) - 300;
    const int32_t g = static_cast<int32_t>(random() % 1024) - 300;
    const int32_t b = static_cast<int32_t>(random() % 1024) - 300;
    EXPECT_EQ(gray_of(r, g, b), static_cast<int32_t>(std::floor((76.0 * r + 150.0 * g + 30.0 * b) / 256.0)));
  }
}

TEST(ToGray, SizeComesFromTheSourceAndSamplesAreWrittenConsecutively) {
  constexpr int width = 5;
  constexpr int height = 3;
  constexpr int stride = 4 * width + 3;
  std::vector<int32_t> samples(stride * height, 100000);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < 3; ++c) samples[static_cast<size_t>(y * stride + 4 * x + c)] = 10 * y + x;
  BlendImage src = color_record(samples.data(), width, height);
  src.stride = stride;
  src.steps[0] = src.steps[1] = src.steps[2] = 4;
  GuardedSamples out(width * height, kUntouched);
  BlendGray dst = gray_record(out.data(), 2, 1);
  dst.stride = 100;
  to_gray(src, dst);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) EXPECT_EQ(out[y * width + x], 10 * y + x);
}

TEST(ToGray, EmptyImagesWriteNothing) {
  GuardedSamples out(4, kUntouched);
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {-3, 4}, {4, -3}}) {
    const BlendImage src = color_record(nullptr, width, height);
    BlendGray dst = gray_record(out.data(), width, height);
    to_gray(src, dst);
  }
  EXPECT_EQ(out.values(), std::vector<int32_t>(4, kUntouched));
}

TEST(SubtractGray, MismatchesWriteNothing) {
  GuardedSamples a(12, 1), b(12, 2), out(12, kUntouched);
  BlendGray result = gray_record(out.data(), 4, 3);
  const BlendGray good_a = gray_record(a.data(), 4, 3);
  const BlendGray good_b = gray_record(b.data(), 4, 3);
  BlendGray bad = good_a;
  bad.channels = 3;
  EXPECT_EQ(subtract_gray(bad, good_b, result), Status::mismatch);
  bad = good_b;
  bad.channels = 3;
  EXPECT_EQ(subtract_gray(good_a, bad, result), Status::mismatch);
  bad = good_b;
  bad.height = 2;
  EXPECT_EQ(subtract_gray(good_a, bad, result), Status::mismatch);
  bad = good_b;
  bad.width = 3;
  EXPECT_EQ(subtract_gray(good_a, bad, result), Status::mismatch);
  EXPECT_EQ(out.values(), std::vector<int32_t>(12, kUntouched));
}

TEST(SubtractGray, TheResultsOwnRecordIsNotChecked) {
  GuardedSamples a(12, 1), b(12, 4), out(12, kUntouched);
  BlendGray result{0, 0, 5, 0, 0, out.data(), 0};
  EXPECT_EQ(subtract_gray(gray_record(a.data(), 4, 3), gray_record(b.data(), 4, 3), result), Status::ok);
  EXPECT_EQ(out.values(), std::vector<int32_t>(12, 3));
}

TEST(SubtractGray, IntegerMinimumStaysAsItIs) {
  int32_t a[] = {int_min, 0, int_max, int_min, -1};
  int32_t b[] = {0, int_min, -1, int_max, int_max};
  int32_t out[5] = {};
  BlendGray result = gray_record(out, 5, 1);
  ASSERT_EQ(subtract_gray(gray_record(a, 5, 1), gray_record(b, 5, 1), result), Status::ok);
  EXPECT_EQ(out[0], int_min);
  EXPECT_EQ(out[1], int_min);
  EXPECT_EQ(out[2], int_min);
  EXPECT_EQ(out[3], 1);
  EXPECT_EQ(out[4], int_min);
}

TEST(SubtractGray, AllThreeFollowTheFirstImagesStride) {
  constexpr int stride = 7;
  std::vector<int32_t> a(stride * 2 + 3), b(stride * 2 + 3);
  for (size_t i = 0; i < a.size(); ++i) {
    a[i] = static_cast<int32_t>(i * i);
    b[i] = static_cast<int32_t>(50 * i);
  }
  GuardedSamples out(stride * 2 + 3, kUntouched);
  BlendGray first = gray_record(a.data(), 3, 3);
  first.stride = stride;
  const BlendGray second = gray_record(b.data(), 3, 3);
  BlendGray result = gray_record(out.data(), 3, 3);
  ASSERT_EQ(subtract_gray(first, second, result), Status::ok);
  for (int64_t i = 0; i < stride * 2 + 3; ++i) {
    const auto n = static_cast<size_t>(i);
    EXPECT_EQ(out[i], i % stride < 3 ? std::abs(a[n] - b[n]) : kUntouched) << i;
  }
}

TEST(SubtractGray, RandomImagesOfManyWidthsAlsoInPlace) {
  const unsigned seed = 31002;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int width = 0; width <= 40; ++width) {
    const int height = 1 + static_cast<int>(random() % 4);
    GuardedSamples a(width * height), b(width * height), out(width * height, kUntouched);
    std::vector<int32_t> expected;
    for (int i = 0; i < width * height; ++i) {
      a[i] = static_cast<int32_t>(random() % 512);
      b[i] = static_cast<int32_t>(random() % 512);
      expected.push_back(std::abs(a[i] - b[i]));
    }
    const BlendGray first = gray_record(a.data(), width, height);
    BlendGray second = gray_record(b.data(), width, height);
    BlendGray result = gray_record(out.data(), width, height);
    ASSERT_EQ(subtract_gray(first, second, result), Status::ok);
    EXPECT_EQ(out.values(), expected);
    ASSERT_EQ(subtract_gray(first, second, second), Status::ok);
    EXPECT_EQ(b.values(), expected);
  }
}

std::vector<int32_t> detail_of(int width, int height, const std::vector<int32_t>& values) {
  ExactGray src(width, height, values);
  GuardedSamples out(int64_t{width} * height, kUntouched);
  BlendGray dst = gray_record(out.data(), width, height);
  EXPECT_EQ(extract_detail(src.record, dst), Status::ok);
  EXPECT_EQ(src.samples, values);
  return out.values();
}

// Single precision gives the mean back exactly for 97 of the 256 greys, whatever part of the window is inside the image.
TEST(ExtractDetail, ConstantImageGivesZerosBordersIncluded) {
  for (const int gray : {0, 1, 4, 8, 16, 32, 64, 71, 100, 101, 128, 150, 196, 224, 233, 246, 254}) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {5, 5}, {6, 11}, {11, 11}, {23, 17}}) {
      SCOPED_TRACE(testing::Message() << gray << " in " << width << " x " << height);
      const auto count = static_cast<size_t>(width * height);
      EXPECT_EQ(detail_of(width, height, std::vector<int32_t>(count, gray)), std::vector<int32_t>(count, 0));
    }
  }
}

// Images up to the window's size have every part of the window inside somewhere.
TEST(ExtractDetail, ConstantImageOfAnyGrayIsOffByOneAtMost) {
  int exact = 0;
  for (int gray = 0; gray < 256; ++gray) {
    bool all_zero = true;
    for (int size = 0; size < 11 * 11; ++size) {
      const int width = 1 + size % 11, height = 1 + size / 11;
      for (const int32_t value : detail_of(width, height, std::vector<int32_t>(static_cast<size_t>(width * height), gray))) {
        EXPECT_TRUE(value == 0 || value == 1) << gray;
        all_zero = all_zero && value == 0;
      }
    }
    exact += all_zero;
  }
  EXPECT_EQ(exact, 97) << "the mean is rounded in single precision and truncated";
}

TEST(ExtractDetail, MeanOfASingleBrightSampleIsSpreadFlat) {
  std::vector<int32_t> row(30, 0);
  row[15] = 110;
  const std::vector<int32_t> detail = detail_of(30, 1, row);
  for (int x = 0; x < 30; ++x) EXPECT_EQ(detail[static_cast<size_t>(x)], x == 15 ? 100 : std::abs(x - 15) <= 5 ? 10 : 0) << x;
}

TEST(ExtractDetail, RandomImagesAreDifferencesToTheClippedMean) {
  const unsigned seed = 31003;
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 20; ++round) {
    const int width = 1 + static_cast<int>(random() % 30);
    const int height = 1 + static_cast<int>(random() % 30);
    std::vector<int32_t> values;
    for (int i = 0; i < width * height; ++i) values.push_back(static_cast<int32_t>(random() % 256));
    const std::vector<int32_t> detail = detail_of(width, height, values);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        double sum = 0;
        int rows = 0;
        for (int v = std::max(y - 5, 0); v <= std::min(y + 5, height - 1); ++v, ++rows) {
          double row_sum = 0;
          int columns = 0;
          for (int u = std::max(x - 5, 0); u <= std::min(x + 5, width - 1); ++u, ++columns)
            row_sum += values[static_cast<size_t>(v * width + u)];
          sum += row_sum / columns;
        }
        const double mean = sum / rows;
        // Exact means only: near a whole number single precision decides.
        if (std::abs(mean - std::round(mean)) < 1e-3) continue;
        const auto here = static_cast<size_t>(y * width + x);
        EXPECT_EQ(detail[here], std::abs(values[here] - static_cast<int>(mean))) << x << ", " << y;
      }
    }
  }
}

TEST(ExtractDetail, EmptyImagesWriteNothing) {
  GuardedSamples out(4, kUntouched);
  for (const auto& [width, height] : {std::pair{0, 4}, {4, 0}, {-3, 4}, {4, -3}}) {
    BlendGray dst = gray_record(out.data(), width, height);
    EXPECT_EQ(extract_detail(gray_record(nullptr, width, height), dst), Status::ok);
  }
  EXPECT_EQ(out.values(), std::vector<int32_t>(4, kUntouched));
}

TEST(ExtractDetail, EveryFailedAllocationIsReportedAndLeavesTheResultAlone) {
  ExactGray src(13, 12, std::vector<int32_t>(13 * 12, 9));
  GuardedSamples out(13 * 12, kUntouched);
  BlendGray dst = gray_record(out.data(), 13, 12);
  {
    const FailingHeap heap;
    ASSERT_EQ(extract_detail(src.record, dst), Status::ok);
    EXPECT_EQ(heap.requests(), 3);
    EXPECT_EQ(heap.held(), 0);
  }
  std::fill(out.data(), out.data() + 13 * 12, kUntouched);
  for (int request = 0; request < 3; ++request) {
    testing::internal::CaptureStdout();
    {
      const FailingHeap heap(request);
      EXPECT_EQ(extract_detail(src.record, dst), Status::no_memory);
      EXPECT_EQ(heap.held(), 0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "only the exported functions print";
    EXPECT_EQ(out.values(), std::vector<int32_t>(13 * 12, kUntouched));
  }
}

}  // namespace
}  // namespace biseam::test
