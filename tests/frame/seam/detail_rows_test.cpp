#include "frame/seam/detail_rows.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

constexpr float kTap = 1.0f / 11.0f;

// Taps one by one, every sum rounded on its own.
float weighted_sum(const std::vector<float>& samples, size_t first, size_t stride) {
  float sum = 0.0f;
  for (size_t j = 0; j < 11; ++j) {
    const float product = kTap * samples[first + j * stride];
    sum += product;
  }
  return sum;
}

std::vector<float> any_samples(RandomSource& random, size_t count) {
  std::vector<float> samples(count);
  for (float& sample : samples) sample = random.real_between(-8388608.0f, 8388608.0f);
  return samples;
}

TEST(GrayRow, WeighsRedGreenAndBlueAndWraps) {
  RandomSource random;
  for (int count = 0; count < 70; ++count) {
    std::vector<int32_t> pixels(static_cast<size_t>(3 * count));
    for (int32_t& sample : pixels) sample = static_cast<int32_t>(random.word()) >> random.between(0, 31);
    GuardedBlock<int32_t> gray(static_cast<size_t>(count));
    kGrayRow.best()(pixels.data(), gray.data(), count);
    for (size_t x = 0; x < gray.size(); ++x) {
      const int64_t sum = int64_t{76} * pixels[3 * x] + int64_t{150} * pixels[3 * x + 1] + int64_t{30} * pixels[3 * x + 2];
      ASSERT_EQ(static_cast<int32_t>(sum) >> 8, gray[x]) << x << " of " << count;
    }
  }
}

TEST(MeanRow, AddsElevenTapsInTheirOrder) {
  RandomSource random;
  for (int count = 0; count < 70; ++count) {
    const size_t size = static_cast<size_t>(count);
    const std::vector<float> samples = any_samples(random, size + 10);
    std::vector<float> totals(size);
    for (float& total : totals) total = random.real_between(kTap, 1.0f);
    GuardedBlock<float> means(size);
    kMeanRow.best()(samples.data(), kTap, totals.data(), means.data(), count);
    for (size_t x = 0; x < size; ++x) ASSERT_EQ(weighted_sum(samples, x, 1) / totals[x], means[x]) << x << " of " << count;
  }
}

TEST(DetailRow, IsTheDistanceToTheMeanOfElevenRowsTowardZero) {
  RandomSource random;
  for (int count = 0; count < 70; ++count) {
    const size_t size = static_cast<size_t>(count), stride = size + static_cast<size_t>(random.between(0, 3));
    const std::vector<float> rows = any_samples(random, 10 * stride + size);
    std::vector<int32_t> gray(size);
    for (int32_t& sample : gray) sample = random.between(-(1 << 23), (1 << 23) - 1);
    GuardedBlock<int32_t> detail(size);
    kDetailRow.best()(rows.data(), static_cast<ptrdiff_t>(stride), kTap, 1.0f, gray.data(), detail.data(), count);
    for (size_t x = 0; x < size; ++x) {
      ASSERT_EQ(std::abs(gray[x] - static_cast<int32_t>(weighted_sum(rows, x, stride))), detail[x]) << x << " of " << count;
    }
  }
}

}  // namespace
}  // namespace biseam::test
