#include "ring/sample/sample_row.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "ring/sample/formulas.hpp"
#include "ring/sample/sample_row_kernels.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

using namespace ring;

namespace {

constexpr Quality kQualities[] = {Quality::fast, Quality::good, Quality::best};

struct Format {
  SampleType type;
  int bits, shift;
};
constexpr Format kFormats[] = {{SampleType::bytes, 8, 0},  {SampleType::byte_pairs, 8, 0},  {SampleType::words, 10, 0},
                               {SampleType::words, 12, 4}, {SampleType::word_pairs, 10, 6}, {SampleType::word_pairs, 12, 0}};

// A picture of values, as the samplers get it.
struct Picture {
  Format format;
  int width, height;
  std::vector<int> values;  // components side by side
  std::vector<uint8_t> bytes;

  Picture(Format f, int w, int h) : format(f), width(w), height(h) {
    values.resize(static_cast<std::size_t>(w * h * components()));
  }

  int components() const { return is_pairs(format.type) ? 2 : 1; }
  int most() const { return (1 << format.bits) - 1; }

  template <class Value>
  void fill(Value value) {
    for (int& v : values) v = value();
    bytes.resize(values.size() * (is_words(format.type) ? 2 : 1));
    for (std::size_t i = 0; i < values.size(); ++i) {
      const auto word = static_cast<uint16_t>(values[i] << format.shift);
      if (is_words(format.type)) {
        std::memcpy(&bytes[2 * i], &word, 2);
      } else {
        bytes[i] = static_cast<uint8_t>(word);
      }
    }
  }

  SampleSource source() const {
    const auto narrow = [](int value) { return static_cast<uint8_t>(value); };
    return {bytes.data(),
            static_cast<std::ptrdiff_t>(width) * bytes_of(format.type),
            width,
            height,
            format.type,
            narrow(format.bits),
            narrow(format.shift)};
  }

  double at(int x, int y, int c) const {
    x = std::clamp(x, 0, width - 1), y = std::clamp(y, 0, height - 1);
    return values[static_cast<std::size_t>((y * width + x) * components() + c)];
  }
};

// Results as values: what was shifted up is shifted back.
std::vector<int> sample(SampleAll* all, const Picture& picture, const AxisWeights& across, const AxisWeights& down,
                        SampleOutput output, const std::vector<int32_t>& x, const std::vector<int32_t>& y) {
  const SampleJob job{picture.source(), &across, &down, output};
  std::vector<uint8_t> bytes(x.size() * static_cast<std::size_t>(output_bytes_of(picture.format.type, output)));
  const int count = static_cast<int>(x.size());
  all(job, {x.data(), y.data(), count, bytes.data(), 0, count, 1});
  std::vector<int> results(x.size() * static_cast<std::size_t>(picture.components()));
  for (std::size_t i = 0; i < results.size(); ++i) {
    if (output == SampleOutput::fine) {
      int16_t value;
      std::memcpy(&value, &bytes[2 * i], 2);
      results[i] = value;
    } else if (is_words(picture.format.type)) {
      uint16_t value;
      std::memcpy(&value, &bytes[2 * i], 2);
      results[i] = value >> picture.format.shift;
      EXPECT_EQ(results[i] << picture.format.shift, value);
    } else {
      results[i] = bytes[i];
    }
  }
  return results;
}

// Weights of an axis by the formulas, at the phase nearest to a position.
struct ExactAxis {
  int first;
  std::vector<double> weights;

  ExactAxis(Quality quality, int widening, int phases, int32_t position) {
    const double at = std::floor(position / 65536.0 * phases + 0.5) / phases;
    const int reach = static_cast<int>(std::ceil((kWidenings[widening] > 8 ? 1 : 3) * kWidenings[widening])) + 1;
    first = static_cast<int>(std::floor(at)) - reach;
    double sum = 0;
    for (int k = 0; k <= 2 * reach; ++k) {
      weights.push_back(widened(quality, widening, first + k - at));
      sum += weights.back();
    }
    for (double& weight : weights) weight /= sum;
  }
};

double exact(const Picture& picture, const ExactAxis& column, const ExactAxis& row, int c) {
  double sum = 0;
  for (std::size_t j = 0; j < row.weights.size(); ++j) {
    if (row.weights[j] == 0) continue;
    double across = 0;
    for (std::size_t k = 0; k < column.weights.size(); ++k) {
      across += column.weights[k] * picture.at(column.first + static_cast<int>(k), row.first + static_cast<int>(j), c);
    }
    sum += row.weights[j] * across;
  }
  return sum;
}

// How far a result may be from the exact one, in steps of the results, one step being 1 / scale of a value.  A weight is off by
// at most 1 / kTapsOne and all of an axis' errors add up to nothing, so they count against half the range of the values only;
// the sums of magnitudes are at most 1.5.  Then the first sum's rounding, at 14 bits, and the second one's.
double bound(const AxisWeights& across, const AxisWeights& down, int most, int bits, double scale) {
  const double weights = 1.5 * (across.taps + down.taps) * most / 2.0 / kTapsOne;
  return scale * (weights + 1.5 * 0.5 / (1 << (kFineBits - bits))) + 0.5 + 1e-6;
}

void draw_positions(RandomSource& random, const Picture& picture, std::vector<int32_t>& x, std::vector<int32_t>& y) {
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = random.between(-10 * 65536, (picture.width + 10) * 65536);
    y[i] = random.between(-10 * 65536, (picture.height + 10) * 65536);
  }
}

TEST(SampleRow, IsTheFormulaWithinItsRoundings) {
  RandomSource random;
  for (const Format& format : kFormats) {
    for (const Quality quality : kQualities) {
      for (const int widening : {0, 0, 1, 4, 8, 10}) {
        Picture picture(format, random.between(1, 60), random.between(1, 60));
        picture.fill([&] {
          return random.between(0, 3) == 0 ? random.between(0, 1) * picture.most() : random.between(0, picture.most());
        });
        const int other = random.between(0, 8);
        const AxisWeights &across = axis_weights(quality, widening), &down = axis_weights(quality, other);
        std::vector<int32_t> x(20), y(20);
        draw_positions(random, picture, x, y);
        const auto samples = sample(kSampleRows.scalar, picture, across, down, SampleOutput::samples, x, y);
        const auto fine = sample(kSampleRows.scalar, picture, across, down, SampleOutput::fine, x, y);
        const double scale = 1 << (kFineBits - format.bits);
        for (std::size_t i = 0; i < samples.size(); ++i) {
          const std::size_t at = i / static_cast<std::size_t>(picture.components());
          const ExactAxis column(quality, widening, across.phases(), x[at]), row(quality, other, down.phases(), y[at]);
          const double value = exact(picture, column, row, static_cast<int>(i) % picture.components());
          const double most = picture.most();
          ASSERT_NEAR(samples[i], std::clamp(value, 0.0, most), bound(across, down, picture.most(), format.bits, 1));
          ASSERT_NEAR(fine[i], value * scale, bound(across, down, picture.most(), format.bits, scale));
        }
      }
    }
  }
}

TEST(SampleRow, KeepsFlatPicturesFlat) {
  RandomSource random;
  for (const Format& format : kFormats) {
    Picture picture(format, 40, 30);
    for (const int value : {0, 1, picture.most() / 2, picture.most() - 1, picture.most()}) {
      picture.fill([&] { return value; });
      for (const Quality quality : kQualities) {
        for (int widening = 0; widening < static_cast<int>(std::size(kWidenings)); ++widening) {
          const AxisWeights &across = axis_weights(quality, widening), &down = axis_weights(quality, random.between(0, 14));
          std::vector<int32_t> x(16), y(16);
          draw_positions(random, picture, x, y);
          for (const int got : sample(kSampleRows.best(), picture, across, down, SampleOutput::samples, x, y)) {
            ASSERT_EQ(got, value);
          }
          for (const int got : sample(kSampleRows.best(), picture, across, down, SampleOutput::fine, x, y)) {
            ASSERT_EQ(got, value << (kFineBits - format.bits));
          }
        }
      }
    }
  }
}

TEST(SampleRow, ReadsSamplesAtTheirPlacesUnchanged) {
  RandomSource random;
  for (const Format& format : kFormats) {
    Picture picture(format, 50, 20);
    picture.fill([&] { return random.between(0, picture.most()); });
    std::vector<int32_t> x(50), y(50);
    for (const Quality quality : kQualities) {
      for (int row = 0; row < 20; ++row) {
        for (int i = 0; i < 50; ++i) x[static_cast<std::size_t>(i)] = i * 65536, y[static_cast<std::size_t>(i)] = row * 65536;
        const AxisWeights& plain = axis_weights(quality, 0);
        const auto got = sample(kSampleRows.best(), picture, plain, plain, SampleOutput::samples, x, y);
        for (std::size_t i = 0; i < got.size(); ++i) {
          ASSERT_EQ(got[i], picture.values[static_cast<std::size_t>(row) * got.size() + i]);
        }
      }
    }
  }
}

// Straight ramps, which every plain kernel keeps, come back without steps: what 10 bits are for.
TEST(SampleRow, KeepsRampsOfTenBits) {
  Picture picture({SampleType::words, 10, 6}, 200, 20);
  int next = 0;
  picture.fill([&] { return 100 + next++ % 200 * 4; });
  for (const Quality quality : kQualities) {
    const AxisWeights& plain = axis_weights(quality, 0);
    std::vector<int32_t> x(640), y(640, 10 * 65536);
    for (int i = 0; i < 640; ++i) x[static_cast<std::size_t>(i)] = 10 * 65536 + i * 16384;
    const auto got = sample(kSampleRows.best(), picture, plain, plain, SampleOutput::samples, x, y);
    for (int i = 0; i < 640; ++i) ASSERT_EQ(got[static_cast<std::size_t>(i)], 140 + i);
  }
}

// The picture that makes the sums as large as they get: the greatest value where a product of weights is positive, or negative.
TEST(SampleRow, SumsFitAtTheWorst) {
  for (const Format& format : kFormats) {
    for (const Quality quality : kQualities) {
      for (int widening = 0; widening < 9; ++widening) {
        const AxisWeights& axis = axis_weights(quality, widening);
        for (const bool low : {false, true}) {
          for (int phase = 0; phase < axis.phases(); phase += axis.phases() / 8) {
            Picture picture(format, axis.taps, axis.taps);
            const int16_t* weights = axis.words + phase * axis.padded_taps;
            int at = 0;
            int64_t most = 0;
            picture.fill([&] {
              const int tap = at++ / picture.components(), k = tap % axis.taps, l = tap / axis.taps;
              const int64_t product = int64_t{weights[k]} * weights[l];
              const bool counts = low ? product < 0 : product > 0;
              if (counts && tap * picture.components() == at - 1) most += product * picture.most();
              return counts ? picture.most() : 0;
            });
            const std::vector<int32_t> place(8, axis.before * 65536 + phase * (65536 >> axis.phase_bits));
            const auto fine = sample(kSampleRows.best(), picture, axis, axis, SampleOutput::fine, place, place);
            const double value = static_cast<double>(most) / kTapsOne / kTapsOne * (1 << (kFineBits - format.bits));
            for (const int got : fine) ASSERT_NEAR(got, value, 1.5 * 0.5 + 0.5);
            ASSERT_GE(value, -10240);
            ASSERT_LE(value, 26624);
          }
        }
      }
    }
  }
}

// Words whose upper bits are more than they should be count as the greatest value.
TEST(SampleRow, TakesWordsPastTheDepthForTheGreatest) {
  Picture picture({SampleType::words, 10, 0}, 40, 20);
  picture.fill([] { return 0xFFFF; });
  const AxisWeights& plain = axis_weights(Quality::good, 0);
  const std::vector<int32_t> place(20, 10 * 65536 + 12345);
  for (const int got : sample(kSampleRows.best(), picture, plain, plain, SampleOutput::samples, place, place))
    EXPECT_EQ(got, 1023);
}

}  // namespace

}  // namespace biseam::test
