#include "ring/combine_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/isas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using ring::FineRow;
using ring::Storage;

constexpr int kCounts[] = {1, 2, 15, 16, 17, 31, 32, 33, 63, 64, 65, 127, 128};
constexpr Storage kStorages[] = {{10, 0}, {10, 6}, {12, 0}, {12, 4}};

// Samples as the samplers give them, corrections as the low band does, at their ends more often than not.
struct Row {
  std::vector<int16_t> samples;
  std::vector<int32_t> corrections;

  Row(RandomSource& random, int count) {
    const auto within = [&](int low, int high) {
      const int kind = random.between(0, 5);
      return kind == 0 ? low : kind == 1 ? high : random.between(low, high);
    };
    for (int i = 0; i < count; ++i) samples.push_back(int16_t(within(-10240, 26624)));
    for (int i = 0; i < count; ++i) corrections.push_back(within(-16383, 16383));
  }
  FineRow row() const { return {samples.data(), corrections.data()}; }
  double value(int i) const { return samples[std::size_t(i)] + corrections[std::size_t(i)]; }
};

// A value in units of 2^(bits - 14) codes as it is stored.
int stored(double fine, Storage storage) {
  const double code = std::floor(std::ldexp(fine, storage.bits - 14) + 0.5);
  return int(std::clamp(code, 0.0, double((1 << storage.bits) - 1))) << storage.shift;
}

std::vector<int16_t> weights_for(RandomSource& random, int count) {
  std::vector<int16_t> weights;
  for (int i = 0; i < count; ++i) weights.push_back(int16_t(std::clamp(random.between(-64, 320), 0, 256)));
  return weights;
}

class CombineRows : public testing::TestWithParam<Isa> {
 protected:
  // Runs write(row0, row1, weights, out, count) on rows of every length and compares with the mean of both.
  template <class Sample, class Write>
  void check(Storage storage, bool both, const Write& write) {
    for (const int count : kCounts) {
      const Row row0(random_, count), row1(random_, count);
      const std::vector<int16_t> weights = weights_for(random_, count);
      GuardedBlock<Sample> out{std::size_t(count)};
      write(row0.row(), row1.row(), weights.data(), out.data(), count);
      for (int i = 0; i < count; ++i) {
        const double w = both ? weights[std::size_t(i)] / 256.0 : 0;
        const int expected = stored((1 - w) * row0.value(i) + w * row1.value(i), storage);
        ASSERT_EQ(out[std::size_t(i)], expected) << i << " of " << count;
      }
    }
  }
  RandomSource random_;
};

TEST_P(CombineRows, RoundHalfUpAndClampBytes) {
  const auto mix = ring::kMixBytes.of(GetParam());
  if (mix == nullptr) GTEST_SKIP() << "no version of its own";
  check<uint8_t>({8, 0}, true, [&](FineRow a, FineRow b, const int16_t* weights, uint8_t* out, int count) {
    mix(a, b, weights, out, count);
  });
}

TEST_P(CombineRows, WithoutCorrectionsAreTheSameBytes) {
  const auto store = ring::kStoreFineBytes.of(GetParam());
  if (store == nullptr) GTEST_SKIP() << "no version of its own";
  std::vector<int16_t> samples;
  for (int sample = INT16_MIN; sample <= INT16_MAX; ++sample) samples.push_back(static_cast<int16_t>(sample));
  for (const int count : {0, 1, 31, 33, 64, 8192}) {
    for (const int rows : {1, 2, 8}) {
      const int apart = 65536 / rows, stride = count + 3;
      GuardedBlock<uint8_t> out{std::size_t((rows - 1) * stride + count)};
      store({samples.data(), apart, count, rows}, out.data(), stride);
      for (int row = 0; row < rows; ++row) {
        for (int i = 0; i < count; ++i) {
          const int sample = samples[std::size_t(row * apart + i)];
          ASSERT_EQ(out[std::size_t(row * stride + i)], std::clamp((sample + 32) >> 6, 0, 255)) << i;
        }
      }
    }
  }
}

TEST_P(CombineRows, RoundHalfUpAndClampWords) {
  const auto store = ring::kStoreWords.of(GetParam());
  const auto mix = ring::kMixWords.of(GetParam());
  if (store == nullptr || mix == nullptr) GTEST_SKIP() << "no version of its own";
  for (const Storage storage : kStorages) {
    check<uint16_t>(storage, false,
                    [&](FineRow row, FineRow, const int16_t*, uint16_t* out, int count) { store(row, storage, out, count); });
    check<uint16_t>(storage, true, [&](FineRow a, FineRow b, const int16_t* weights, uint16_t* out, int count) {
      mix(a, b, weights, storage, out, count);
    });
  }
}

// Corrections at anchors, 4 times theirs along the rows; samples beyond the ring's edge take none.
struct Corrections {
  ring::AnchorBand band;

  explicit Corrections(RandomSource& random) {
    for (auto& row : band.values) {
      for (int32_t& value : row) value = random.between(-4 * 16383, 4 * 16383);
    }
  }
  int at(int row, int column) const {
    const double upper = band.values[row / 4][column], lower = band.values[row / 4 + 1][column];
    return int(std::floor((upper * (4 - row % 4) + lower * (row % 4)) / 16 + 0.5));
  }
};

template <class Sample>
void check_corrected(ring::StoreCorrected* store, Storage storage, RandomSource& random) {
  for (const int columns : {1, 15, 16, 17, 31, 32, 50, 64}) {
    for (const int channels : {1, 2}) {
      for (const bool edge : {false, true}) {
        const int rows = random.between(1, 16), first_row = 16 * random.between(0, 1), width = channels * columns;
        const Corrections first(random), second(random), across(random);
        const Row fine(random, rows * width);
        const int low = random.between(-16000, 0), high = random.between(0, 16000), stride = width + random.between(0, 3);
        GuardedBlock<Sample> out{std::size_t((rows - 1) * stride + width)};
        store({{fine.samples.data(), width, columns, rows},
               first_row,
               {&first.band, channels == 2 ? &second.band : nullptr},
               edge ? &across.band : nullptr,
               low,
               high},
              storage, reinterpret_cast<uint8_t*>(out.data()), stride * std::ptrdiff_t{sizeof(Sample)});
        for (int row = 0; row < rows; ++row) {
          for (int i = 0; i < width; ++i) {
            const int column = i / channels, place = across.at(first_row + row, column);
            const int correction = (i % channels == 0 ? first : second).at(first_row + row, column);
            const bool within = !edge || (low <= place && place <= high);
            const int expected = stored(fine.samples[std::size_t(row * width + i)] + (within ? correction : 0), storage);
            ASSERT_EQ(expected, out[std::size_t(row * stride + i)]) << row << " " << i << " of " << width;
          }
        }
      }
    }
  }
}

TEST_P(CombineRows, AreCorrectedBetweenAnchors) {
  const auto bytes = ring::kStoreCorrectedBytes.of(GetParam()), words = ring::kStoreCorrectedWords.of(GetParam());
  if (bytes == nullptr || words == nullptr) GTEST_SKIP() << "no version of its own";
  for (int round = 0; round < 8; ++round) {
    check_corrected<uint8_t>(bytes, {8, 0}, random_);
    for (const Storage storage : kStorages) check_corrected<uint16_t>(words, storage, random_);
  }
}

INSTANTIATE_TEST_SUITE_P(Isas, CombineRows, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
