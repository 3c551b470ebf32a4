#include "ring/strip/low_band.hpp"

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

constexpr StripShape kShapes[] = {{16, 5}, {16, 9}, {48, 17}, {64, 28}, {96, 56}, {240, 14}, {64, 129}};

struct LowBand {
  StripShape shape;
  std::vector<int16_t> correction0, correction1, fade, weights;

  LowBand(StripShape s, const std::vector<int16_t>& difference, const std::vector<int32_t>& path, int margin) : shape(s) {
    GuardedBlock<int16_t> samples(static_cast<size_t>(pyramid_samples(s))), w(samples.size());
    const StripPyramid pyramid = lay_out_pyramid(s, samples.data()), of_weights = lay_out_pyramid(s, w.data());
    GuardedBlock<int16_t> c0(difference.size()), c1(difference.size()), window(static_cast<size_t>(s.width));
    make_fade(s.width, margin, window.data());
    build_seam_weights(path.data(), of_weights);
    build_difference_pyramid(difference.data(), pyramid);
    mix_low_band(pyramid, of_weights, difference.data(), window.data(), c0.data(), c1.data());
    correction0 = c0.values();
    correction1 = c1.values();
    fade = window.values();
    weights = w.values();
  }
};

std::vector<int32_t> random_path(RandomSource& random, StripShape shape) {
  const int margin = shape.width / 4;
  std::vector<int32_t> path(static_cast<size_t>(shape.length) + 1);
  const int start = random.between(margin, shape.width - 1 - margin);
  int b = start;
  for (int t = 0; t < shape.length; ++t) {
    path[static_cast<size_t>(t)] = b << 16;
    b = std::clamp(b + random.between(-1, 1), margin, shape.width - 1 - margin);
    // Home in time.
    const int left = shape.length - 1 - t;
    b = std::clamp(b, start - left, start + left);
  }
  path.back() = path.front();
  return path;
}

std::vector<int16_t> random_strip(RandomSource& random, StripShape shape) {
  std::vector<int16_t> strip(static_cast<size_t>(strip_samples(shape)));
  for (int16_t& s : strip)
    s = static_cast<int16_t>(random.between(0, 1) != 0 ? random.between(0, kMaxFine) : random.between(0, 1) * kMaxFine);
  return strip;
}

std::vector<int16_t> subtracted(const std::vector<int16_t>& a, const std::vector<int16_t>& b) {
  std::vector<int16_t> out(a.size());
  for (size_t i = 0; i < a.size(); ++i) out[i] = static_cast<int16_t>(a[i] - b[i]);
  return out;
}

// The Laplacian pyramid of a strip in double.
std::vector<PlainStrip> plain_laplacian(PlainStrip strip) {
  std::vector<PlainStrip> levels;
  for (int level = strip_levels(strip.shape); level > 1; --level) {
    PlainStrip coarse = plain_reduced(strip);
    const PlainStrip expanded = plain_expanded(coarse, strip.shape);
    for (size_t i = 0; i < expanded.samples.size(); ++i) strip.samples[i] -= expanded.samples[i];
    levels.push_back(std::move(strip));
    strip = std::move(coarse);
  }
  levels.push_back(std::move(strip));
  return levels;
}

}  // namespace

// Against two strips mixed in bands the textbook's way, in double.  On level l a reduced sample is off by up to l / 2, the
// expansion by (l + 1) / 2 + 1/2, the weight by l / 2 of 256, the product by 1/2; that of the coarser level passes weights that
// add up to 1. Before the window, where the sum stays within the corrections' range.
TEST(LowBand, IsTheMixInBandsMinusTheStrip) {
  RandomSource random;
  for (const StripShape shape : kShapes) {
    const std::vector<int16_t> strip0 = random_strip(random, shape), strip1 = random_strip(random, shape);
    const std::vector<int32_t> path = random_path(random, shape);
    const LowBand band(shape, subtracted(strip1, strip0), path, shape.width / 4);
    const auto levels0 = plain_laplacian(plain_strip(shape, strip0.data())),
               levels1 = plain_laplacian(plain_strip(shape, strip1.data()));
    PlainStrip mask{shape, std::vector<double>(strip0.size())};
    for (int t = 0; t < shape.length; ++t) {
      for (int b = 0; b < shape.width; ++b) {
        const int row = path[static_cast<size_t>(t)] >> 16;
        mask.at(t, b) = b > row ? 1 : b == row ? 0.5 : 0;
      }
    }
    std::vector<PlainStrip> masks{mask};
    for (size_t l = 1; l < levels0.size(); ++l) masks.push_back(plain_reduced(masks.back()));
    double bound = 0;
    PlainStrip sum;
    for (size_t l = levels0.size(); l-- > 0;) {
      PlainStrip mixed{levels0[l].shape, std::vector<double>(levels0[l].samples.size())};
      double greatest = 0;
      for (size_t i = 0; i < mixed.samples.size(); ++i) {
        const double m = masks[l].samples[i], difference = levels1[l].samples[i] - levels0[l].samples[i];
        mixed.samples[i] = (1 - m) * levels0[l].samples[i] + m * levels1[l].samples[i];
        greatest = std::max(greatest, std::abs(difference));
      }
      const double k = static_cast<double>(l);
      const bool top = l + 1 == levels0.size();
      bound += (top ? k / 2 : k / 2 + (k + 1) / 2 + 0.5) + k / 2 / 256 * greatest + 0.5 + (top ? 0 : 0.5);
      if (!top) {
        const PlainStrip expanded = plain_expanded(sum, mixed.shape);
        for (size_t i = 0; i < mixed.samples.size(); ++i) mixed.samples[i] += expanded.samples[i];
      }
      sum = mixed;
    }
    bound += 0.5;  // the window's rounding
    for (int t = 0; t < shape.length; ++t) {
      for (int b = 0; b < shape.width; ++b) {
        const size_t i = static_cast<size_t>(t * shape.width + b);
        const double window = band.fade[static_cast<size_t>(b)] / 16384.0;
        const double c0 = std::clamp(sum.samples[i] - strip0[i], -16383.0, 16383.0),
                     c1 = std::clamp(sum.samples[i] - strip1[i], -16383.0, 16383.0);
        ASSERT_LE(std::abs(c0 * window - band.correction0[i]), bound) << shape.length << "x" << shape.width;
        ASSERT_LE(std::abs(c1 * window - band.correction1[i]), bound);
      }
    }
  }
}

TEST(LowBand, IsNothingWhereTheLensesAgree) {
  RandomSource random;
  for (const StripShape shape : kShapes) {
    const std::vector<int16_t> difference(static_cast<size_t>(strip_samples(shape)));
    const LowBand band(shape, difference, random_path(random, shape), shape.width / 4);
    EXPECT_EQ(difference, band.correction0);
    EXPECT_EQ(difference, band.correction1);
  }
}

TEST(LowBand, IsExactlyNothingAtTheRingsEdges) {
  RandomSource random;
  for (const StripShape shape : kShapes) {
    const LowBand band(shape, subtracted(random_strip(random, shape), random_strip(random, shape)), random_path(random, shape),
                       shape.width / 4);
    for (int t = 0; t < shape.length; ++t) {
      for (const int b : {0, shape.width - 1}) {
        ASSERT_EQ(0, band.correction0[static_cast<size_t>(t * shape.width + b)]);
        ASSERT_EQ(0, band.correction1[static_cast<size_t>(t * shape.width + b)]);
      }
    }
  }
}

// Inside the window's full part what is added to the lenses takes their strips to the same value on both sides of any line.
TEST(LowBand, TakesBothLensesToTheSameStrip) {
  RandomSource random;
  for (const StripShape shape : kShapes) {
    std::vector<int16_t> difference(static_cast<size_t>(strip_samples(shape)));
    for (int16_t& d : difference) d = static_cast<int16_t>(random.between(-2000, 2000));
    const int margin = shape.width / 4;
    const LowBand band(shape, difference, random_path(random, shape), margin);
    for (int t = 0; t < shape.length; ++t) {
      for (int b = std::max(margin, 1); b < shape.width - std::max(margin, 1); ++b) {
        const size_t i = static_cast<size_t>(t * shape.width + b);
        ASSERT_EQ(difference[i], band.correction0[i] - band.correction1[i]);
      }
    }
  }
}

// A lens that is brighter by d everywhere: along the middle each lens moves half way, from there its correction falls towards
// its own edge, never by more than a few samples' share at once, and never beyond 0 or d.
TEST(LowBand, SpreadsAConstantDifferenceAcrossTheRing) {
  for (const int d : {-6400, -64, 64, 6400, kMaxFine}) {
    const StripShape shape{96, 56};
    const std::vector<int16_t> difference(static_cast<size_t>(strip_samples(shape)), static_cast<int16_t>(d));
    const std::vector<int32_t> path(97, 55 << 15);
    const LowBand band(shape, difference, path, 14);
    const int sign = d < 0 ? -1 : 1, size = d * sign;
    for (int t = 0; t < shape.length; ++t) {
      const int16_t *c0 = &band.correction0[static_cast<size_t>(t * 56)], *c1 = &band.correction1[static_cast<size_t>(t * 56)];
      // Rounding of weights (2 of 256) and of four levels.
      const double slack = size * 3 / 256.0 + 5;
      ASSERT_NEAR(d / 2.0, (c0[27] + c0[28]) / 2.0, slack);
      ASSERT_NEAR(-d / 2.0, (c1[27] + c1[28]) / 2.0, slack);
      for (int b = 0; b < 56; ++b) {
        ASSERT_GE(c0[b] * sign, 0);
        ASSERT_LE(c0[b] * sign, size);
        ASSERT_LE(c1[b] * sign, 0);
        ASSERT_GE(c1[b] * sign, -size);
        if (b > 0 && b <= 28) {
          ASSERT_GE(c0[b] * sign - c0[b - 1] * sign, -slack);
        }
        if (b > 0) {
          ASSERT_LE(std::abs(c0[b] - c0[b - 1]), size / 8.0 + slack) << b;
        }
        if (b > 28) {
          ASSERT_GE(c1[b] * sign - c1[b - 1] * sign, -slack);
        }
      }
    }
  }
}

// Turning what both lenses see turns the corrections with it, by whole samples of the coarsest level.
TEST(LowBand, HasNoBeginningRoundTheRing) {
  RandomSource random;
  for (const StripShape shape : kShapes) {
    const int pitch = 1 << (strip_levels(shape) - 1), turn = pitch * random.between(1, shape.length / pitch);
    const std::vector<int16_t> difference = subtracted(random_strip(random, shape), random_strip(random, shape));
    std::vector<int32_t> path = random_path(random, shape);
    const auto turned = [&](std::vector<int16_t> strip) {
      std::rotate(strip.begin(), strip.begin() + ptrdiff_t{turn} * shape.width, strip.end());
      return strip;
    };
    std::vector<int32_t> turned_path(path.begin(), path.end() - 1);
    std::rotate(turned_path.begin(), turned_path.begin() + turn % shape.length, turned_path.end());
    turned_path.push_back(turned_path.front());
    const LowBand band(shape, difference, path, shape.width / 4),
        other(shape, turned(difference), turned_path, shape.width / 4);
    EXPECT_EQ(turned(band.correction0), other.correction0);
    EXPECT_EQ(turned(band.correction1), other.correction1);
  }
}

}  // namespace biseam::test
