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

class CombineRows : public testing::TestWithParam<Isa> {
 protected:
  RandomSource random_;
};

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
  if (store == nullptr) GTEST_SKIP() << "no version of its own";
  for (const Storage storage : kStorages) {
    for (const int count : kCounts) {
      const Row row(random_, count);
      GuardedBlock<uint16_t> out{std::size_t(count)};
      store(row.row(), storage, out.data(), count);
      for (int i = 0; i < count; ++i) ASSERT_EQ(out[std::size_t(i)], stored(row.value(i), storage)) << i << " of " << count;
    }
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
        const int first_column = random.between(0, 64 - columns);
        GuardedBlock<Sample> out{std::size_t((rows - 1) * stride + width)};
        store({{fine.samples.data(), width, columns, rows},
               first_column,
               first_row,
               {&first.band, channels == 2 ? &second.band : nullptr},
               {edge ? &across.band : nullptr, low, high}},
              storage, reinterpret_cast<uint8_t*>(out.data()), stride * std::ptrdiff_t{sizeof(Sample)});
        for (int row = 0; row < rows; ++row) {
          for (int i = 0; i < width; ++i) {
            const int column = first_column + i / channels, place = across.at(first_row + row, column);
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

// What lens 1 weighs at a distance, in 1/256: from 0 to all of it within the ramp, of 4096 steps a sample.
int weight_at(int distance, int ramp) {
  const double across = ramp / 16, slope = std::floor((std::ldexp(1.0, 28) + std::floor(across / 2)) / across);
  const double past = std::clamp(std::floor((distance + std::floor(ramp / 2.0)) / 16), 0.0, across);
  return int(std::floor(past * slope / (1 << 20) + 0.5));
}

// Both lenses' samples with their corrections, mixed by how far they are from the seam.
template <class Sample>
void check_mixed(ring::MixCorrected* mix, Storage storage, RandomSource& random) {
  for (const int columns : {1, 15, 16, 17, 32, 48, 50, 64}) {
    for (const int channels : {1, 2}) {
      for (const bool edge : {false, true}) {
        const int rows = random.between(1, 8), first_row = 8 * random.between(0, 3), width = channels * columns;
        const int first_column = random.between(0, 64 - columns), ramp = random.between(1 << 12, 1 << 15);
        const Corrections corrections[2][2] = {{Corrections(random), Corrections(random)},
                                               {Corrections(random), Corrections(random)}};
        const Corrections across(random), distances(random);
        const Row fine[2] = {Row(random, rows * width), Row(random, rows * width)};
        const int low = random.between(-16000, 0), high = random.between(0, 16000), stride = width + random.between(0, 3);
        const auto second = [&](int lens) { return channels == 2 ? &corrections[lens][1].band : nullptr; };
        GuardedBlock<Sample> out{std::size_t((rows - 1) * stride + width)};
        mix({{{fine[0].samples.data(), width, columns, rows}, {fine[1].samples.data(), width, columns, rows}},
             first_column,
             first_row,
             {{&corrections[0][0].band, second(0)}, {&corrections[1][0].band, second(1)}},
             {edge ? &across.band : nullptr, low, high},
             &distances.band,
             ramp},
            storage, reinterpret_cast<uint8_t*>(out.data()), stride * std::ptrdiff_t{sizeof(Sample)});
        for (int row = 0; row < rows; ++row) {
          for (int i = 0; i < width; ++i) {
            const int at = first_row + row, column = first_column + i / channels, place = across.at(at, column);
            const bool within = !edge || (low <= place && place <= high);
            const auto value = [&](int lens) {
              const int correction = corrections[lens][i % channels].at(at, column);
              return double(fine[lens].samples[std::size_t(row * width + i)] + (within ? correction : 0));
            };
            const double weight = weight_at(distances.at(at, column), ramp) / 256.0;
            ASSERT_EQ(stored(value(0) * (1 - weight) + value(1) * weight, storage), out[std::size_t(row * stride + i)])
                << row << " " << i << " of " << width;
          }
        }
      }
    }
  }
}

TEST_P(CombineRows, AreMixedByTheirDistances) {
  const auto bytes = ring::kMixCorrectedBytes.of(GetParam()), words = ring::kMixCorrectedWords.of(GetParam());
  if (bytes == nullptr || words == nullptr) GTEST_SKIP() << "no version of its own";
  for (int round = 0; round < 8; ++round) {
    check_mixed<uint8_t>(bytes, {8, 0}, random_);
    for (const Storage storage : kStorages) check_mixed<uint16_t>(words, storage, random_);
  }
}

// Beside the ramp a lens is alone, in its middle both count alike.
TEST_P(CombineRows, ARampGoesFromOneLensToTheOther) {
  const auto mix = ring::kMixCorrectedBytes.of(GetParam());
  if (mix == nullptr) GTEST_SKIP() << "no version of its own";
  const std::vector<int16_t> dark(64, 64 * 20), light(64, 64 * 220);
  ring::AnchorBand none{}, distances{};
  for (const int ramp : {1 << 12, 49152, 1 << 16, 1 << 18, 1 << 20}) {
    const int places[] = {0, 1 << 24, -(1 << 24), ramp / 2, -ramp / 2, ramp / 2 + 16, -ramp / 2 - 16, ramp / 4, -ramp / 4};
    const int expected[] = {120, 220, 20, 220, 20, 220, 20, 170, 70};
    for (int i = 0; i < 9; ++i) distances.values[0][i] = distances.values[1][i] = 4 * places[i];
    GuardedBlock<uint8_t> out{9};
    mix({{{dark.data(), 64, 9, 1}, {light.data(), 64, 9, 1}}, 0, 0, {{&none, nullptr}, {&none, nullptr}}, {}, &distances, ramp},
        {8, 0}, out.data(), 9);
    for (std::size_t i = 0; i < 9; ++i) ASSERT_NEAR(out[i], expected[i], i < 3 || i > 4 ? 0.5 : 1) << i << " of " << ramp;
  }
}

INSTANTIATE_TEST_SUITE_P(Isas, CombineRows, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
