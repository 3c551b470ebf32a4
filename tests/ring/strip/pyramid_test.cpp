#include "ring/strip/pyramid.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "ring/strip/plain_pyramid.hpp"
#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

namespace {

using namespace biseam::ring;

constexpr StripShape kShapes[] = {{4, 5},   {8, 5},   {16, 6},   {16, 7},   {32, 28},
                                  {48, 56}, {64, 33}, {16, 240}, {16, 512}, {16, 511}};

std::vector<int16_t> random_samples(RandomSource& random, StripShape shape, int greatest) {
  std::vector<int16_t> samples(static_cast<size_t>(strip_samples(shape)));
  for (int16_t& s : samples) {
    s = static_cast<int16_t>(random.between(0, 1) != 0 ? random.between(-greatest, greatest)
                                                       : greatest * (1 - 2 * random.between(0, 1)));
  }
  return samples;
}

}  // namespace

TEST(StripPyramid, ReducesToTheNearest) {
  RandomSource random;
  for (const StripShape shape : kShapes) {
    const std::vector<int16_t> fine = random_samples(random, shape, kMaxFine);
    GuardedBlock<int16_t> coarse(static_cast<size_t>(strip_samples(reduced(shape))));
    kReduceLevel.best()(fine.data(), shape, coarse.data());
    const PlainStrip plain = plain_reduced(plain_strip(shape, fine.data()));
    for (size_t i = 0; i < coarse.size(); ++i) ASSERT_LE(std::abs(plain.samples[i] - coarse[i]), 0.5 + 1e-9) << shape.width;
  }
}

TEST(StripPyramid, ExpandsToTheNearest) {
  RandomSource random;
  for (const StripShape shape : kShapes) {
    const std::vector<int16_t> fine = random_samples(random, shape, kMaxFine),
                               coarse = random_samples(random, reduced(shape), kMaxFine);
    GuardedBlock<int16_t> detail(fine.size());
    kSubtractExpanded.best()(fine.data(), coarse.data(), shape, detail.data());
    const PlainStrip plain = plain_expanded(plain_strip(reduced(shape), coarse.data()), shape);
    for (size_t i = 0; i < fine.size(); ++i)
      ASSERT_LE(std::abs(fine[i] - plain.samples[i] - detail[i]), 0.5 + 1e-9) << shape.width;
  }
}

TEST(StripPyramid, AddsWhatIsWeighedAndStaysWithin16Bits) {
  RandomSource random;
  for (const StripShape shape : kShapes) {
    std::vector<int16_t> weights(static_cast<size_t>(strip_samples(shape)));
    for (int16_t& weight : weights) weight = static_cast<int16_t>(random.between(0, kWeightOne));
    const std::vector<int16_t> detail = random_samples(random, shape, 2 * kMaxFine),
                               coarse = random_samples(random, reduced(shape), 32767);
    GuardedBlock<int16_t> sum(detail.size());
    std::copy(detail.begin(), detail.end(), sum.data());
    kAddExpanded.best()(sum.data(), weights.data(), coarse.data(), shape, sum.data());
    const PlainStrip plain = plain_expanded(plain_strip(reduced(shape), coarse.data()), shape);
    for (size_t i = 0; i < detail.size(); ++i) {
      const double value = std::clamp(detail[i] * (weights[i] / 256.0) + plain.samples[i], -32768.0, 32767.0);
      ASSERT_LE(std::abs(value - sum[i]), 1.0 + 1e-9) << shape.width;
    }
  }
}

}  // namespace biseam::test
