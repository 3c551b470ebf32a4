#include "ring/light/spread_places.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

TEST(SpreadPlaces, GoesLinearlyFromPlaceToPlace) {
  RandomSource random;
  for (int round = 0; round < 300; ++round) {
    const int bits = random.between(0, 6), apart = 1 << bits, step_bits = random.between(0, 2), count = random.between(0, 64);
    std::vector<MatchPlace> places(64 * 4 + 3);
    for (MatchPlace& place : places) {
      for (int16_t& value : place.values) value = static_cast<int16_t>(random.between(kLeastGain, kMostGain));
    }
    const int start = random.between(0, apart - 1), values[2] = {random.between(0, 4), random.between(0, 4)};
    for (const int each : {1, 2}) {
      int16_t out[128];
      const int16_t *const first = &places[0].values[values[0]], *const second = &places[0].values[values[1]];
      kSpreadPlaces.scalar({first, each == 2 ? second : nullptr, bits, start, step_bits}, out, count);
      for (int i = 0; i < count * each; ++i) {
        const double place = double(start + ((i / each) << step_bits)) / apart, past = place - std::floor(place);
        const std::size_t column = std::size_t(place);
        const auto at = [&](std::size_t c) { return double(places[c].values[values[i % each]]); };
        ASSERT_EQ(out[i], std::floor(at(column) * (1 - past) + at(column + 1) * past + 0.5)) << bits << " " << i;
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
