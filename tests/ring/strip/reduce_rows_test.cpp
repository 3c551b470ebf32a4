#include "ring/strip/reduce_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "ring/strip/shape.hpp"
#include "support/isas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

namespace {

using namespace biseam::ring;

constexpr int kFactors[] = {1, 2, 4, 8, 16, 32};

std::vector<int32_t> weights_of(int factor) {
  const ReductionKernel kernel = make_reduction_kernel(factor);
  return {kernel.weights, kernel.weights + reduction_taps(factor)};
}

// The mean by weights that add up to factor^3, times 2^up, halves up.
int64_t mean(const std::vector<int64_t>& values, int factor, int up) {
  const std::vector<int32_t> weights = weights_of(factor);
  const int64_t one = int64_t{factor} * factor * factor;
  int64_t sum = 0;
  for (size_t k = 0; k < weights.size(); ++k) sum += weights[k] * values[k];
  return ((sum << (up + 1)) + one) / (2 * one);
}

// One output after the next in blocks around what a vector or a cached block holds.
constexpr int kCounts[] = {0, 1, 7, 16, 33, 255, 256, 300};

class ReduceRows : public testing::TestWithParam<Isa> {
 protected:
  // Samples of any size, many of them the greatest.
  template <class T>
  std::vector<T> samples(int count, int most) {
    std::vector<T> all(static_cast<size_t>(count));
    for (T& sample : all) sample = static_cast<T>(random_.between(0, 2) == 0 ? most : random_.between(0, most));
    return all;
  }

  template <class T>
  std::vector<std::vector<T>> rows(int factor, int samples_each, int most) {
    std::vector<std::vector<T>> all;
    for (int k = 0; k < reduction_taps(factor); ++k) all.push_back(samples<T>(samples_each, most));
    return all;
  }

  RandomSource random_;
};

template <class T>
std::vector<const T*> pointers(const std::vector<std::vector<T>>& rows) {
  std::vector<const T*> all;
  for (const auto& row : rows) all.push_back(row.data());
  return all;
}

}  // namespace

TEST(ReductionKernel, IsRepeatedHalving) {
  EXPECT_EQ((std::vector<int32_t>{1}), weights_of(1));
  EXPECT_EQ((std::vector<int32_t>{1, 3, 3, 1}), weights_of(2));
  EXPECT_EQ((std::vector<int32_t>{1, 3, 6, 10, 12, 12, 10, 6, 3, 1}), weights_of(4));
  for (const int factor : kFactors) {
    const std::vector<int32_t> weights = weights_of(factor);
    int64_t sum = 0;
    for (const int32_t weight : weights) sum += weight;
    EXPECT_EQ(int64_t{factor} * factor * factor, sum);
    EXPECT_EQ(sum, int64_t{1} << make_reduction_kernel(factor).shift);
    EXPECT_EQ(factor, make_reduction_kernel(factor).factor);
    EXPECT_EQ(weights, std::vector<int32_t>(weights.rbegin(), weights.rend()));
  }
}

TEST_P(ReduceRows, OfBytesAreMeansInFineUnits) {
  ReduceRowsOfBytes* const reduce = kReduceRowsOfBytes.of(GetParam());
  if (reduce == nullptr) GTEST_SKIP() << "no version of its own";
  for (const int factor : kFactors) {
    for (const int step : {1, 2}) {
      for (const int count : kCounts) {
        const auto all = rows<uint8_t>(factor, step * count, 255);
        std::vector<int16_t> out(static_cast<size_t>(count) + 1, -7);
        reduce(pointers(all).data(), step, make_reduction_kernel(factor), out.data(), count);
        for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
          std::vector<int64_t> values;
          for (const auto& row : all) values.push_back(row[static_cast<size_t>(step) * i]);
          ASSERT_EQ(mean(values, factor, kFineBits - 8), out[i]) << factor << ", " << i;
        }
        ASSERT_EQ(-7, out.back());
      }
    }
  }
}

TEST_P(ReduceRows, OfWordsAreMeansOfCodesUpToTheGreatest) {
  ReduceRowsOfWords* const reduce = kReduceRowsOfWords.of(GetParam());
  if (reduce == nullptr) GTEST_SKIP() << "no version of its own";
  for (const SampleFormat format : {SampleFormat{10, 0}, {10, 6}, {12, 0}, {12, 4}}) {
    for (const int factor : kFactors) {
      const int step = random_.between(1, 2), count = random_.between(0, 300);
      const auto all = rows<uint16_t>(factor, step * count, 65535);
      std::vector<int16_t> out(static_cast<size_t>(count) + 1, -7);
      reduce(pointers(all).data(), step, format, make_reduction_kernel(factor), out.data(), count);
      for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
        std::vector<int64_t> values;
        for (const auto& row : all) {
          values.push_back(std::min(row[static_cast<size_t>(step) * i] >> format.shift, (1 << format.depth) - 1));
        }
        ASSERT_EQ(mean(values, factor, kFineBits - format.depth), out[i]) << factor << ", " << i;
      }
      ASSERT_EQ(-7, out.back());
    }
  }
}

TEST_P(ReduceRows, ColumnsAreMeansOfNeighbours) {
  ReduceColumns* const reduce = kReduceColumns.of(GetParam());
  if (reduce == nullptr) GTEST_SKIP() << "no version of its own";
  for (const int factor : kFactors) {
    for (const int count : kCounts) {
      const auto all = samples<int16_t>(factor * count + reduction_taps(factor), kMaxFine);
      std::vector<int16_t> out(static_cast<size_t>(count) + 1, -7);
      reduce(all.data(), make_reduction_kernel(factor), out.data(), count);
      for (int i = 0; i < count; ++i) {
        const auto first = all.begin() + factor * i;
        ASSERT_EQ(mean(std::vector<int64_t>(first, first + reduction_taps(factor)), factor, 0), out[static_cast<size_t>(i)])
            << factor << ", " << i;
      }
      ASSERT_EQ(-7, out.back());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Isas, ReduceRows, testing::ValuesIn(isas_here()), isa_name);

}  // namespace biseam::test
