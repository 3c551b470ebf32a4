#include "ring/strip/lookup.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "ring/strip/low_band.hpp"
#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

namespace {

using namespace biseam::ring;

struct Places {
  std::vector<int32_t> t, b;

  Places(RandomSource& random, StripShape shape, int count) {
    for (int i = 0; i < count; ++i) {
      t.push_back(random.between(-(shape.length << 16), (shape.length << 17) - 1));
      b.push_back(random.between(-(3 << 16), (shape.width + 3) << 16));
    }
  }
};

}  // namespace

TEST(StripLookup, IsLinearBetweenCorrections) {
  RandomSource random;
  for (const StripShape shape : {StripShape{16, 5}, {48, 17}, {960, 56}, {4096, 240}}) {
    std::vector<int16_t> strip(static_cast<size_t>(strip_samples(shape)));
    for (int16_t& s : strip)
      s = static_cast<int16_t>(random.between(0, 1) != 0 ? random.between(-kMaxCorrection, kMaxCorrection)
                                                         : kMaxCorrection * (1 - 2 * random.between(0, 1)));
    for (const int count : {0, 1, 7, 8, 15, 16, 17, 63, 64}) {
      const Places places(random, shape, count);
      GuardedBlock<int32_t> out(static_cast<size_t>(count));
      kLookUpCorrections.best()(strip.data(), shape, places.t.data(), places.b.data(), out.data(), count);
      for (int i = 0; i < count; ++i) {
        const size_t at = static_cast<size_t>(i);
        // Places are those of 256 at or before the given one.
        const double t = std::floor(std::fmod(places.t[at] / 65536.0 + shape.length, shape.length) * 256) / 256;
        const double b = std::floor(std::clamp(places.b[at] / 65536.0, 0.0, shape.width - 1.0) * 256) / 256;
        const int row = static_cast<int>(t), column = std::min(static_cast<int>(b), shape.width - 2);
        const auto sample = [&](int r, int c) {
          return double{static_cast<double>(strip[static_cast<size_t>(r % shape.length * shape.width + c)])};
        };
        const double u = t - row, v = b - column;
        const double value = (1 - u) * ((1 - v) * sample(row, column) + v * sample(row, column + 1)) +
                             u * ((1 - v) * sample(row + 1, column) + v * sample(row + 1, column + 1));
        ASSERT_EQ(std::floor(value + 0.5), out[at]) << t << " " << b;
      }
    }
  }
}

}  // namespace biseam::test
