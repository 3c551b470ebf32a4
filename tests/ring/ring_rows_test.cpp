#include "ring/ring_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "ring/mesh.hpp"
#include "support/isas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using ring::kTurnBits;
using ring::StripShape;

class RingRows : public testing::TestWithParam<Isa> {};

TEST_P(RingRows, TurnAnglesIntoStripSamples) {
  const auto convert = ring::kToStripSamples.of(GetParam());
  if (convert == nullptr) GTEST_SKIP() << "no version of its own";
  constexpr int32_t kTurn = 1 << kTurnBits, kEighth = kTurn / 8;
  RandomSource random;
  for (const StripShape shape : {StripShape{16, 5}, {144, 9}, {960, 56}, {4096, 240}}) {
    std::vector<int32_t> t = {0, 1, -1, kTurn - 1, kTurn, -kTurn, 2 * kTurn, -2 * kTurn, 2 * kTurn - 1};
    std::vector<int32_t> b = {0, 1, -1, kEighth, -kEighth, kEighth + 1, -kEighth - 1, 2 * kEighth, -2 * kEighth};
    while (t.size() < 61) {
      t.push_back(random.between(-2 * kTurn, 2 * kTurn));
      b.push_back(random.between(-2 * kEighth, 2 * kEighth));
    }
    std::vector<int32_t> rows = t, columns = b;
    convert(shape, rows.data(), columns.data(), int(rows.size()));
    for (std::size_t i = 0; i < t.size(); ++i) {
      const double turns = std::ldexp(double(t[i]), -kTurnBits);
      const double row = (turns - std::floor(turns)) * shape.length * 65536;
      ASSERT_EQ(rows[i], std::floor(row)) << t[i];
      const double across = std::ldexp(std::clamp(double(b[i]), -double(kEighth), double(kEighth)), -kTurnBits);
      const double column = (across * shape.length + 0.5 * (shape.width - 1)) * 65536;
      ASSERT_EQ(columns[i], std::floor(column)) << b[i];
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Isas, RingRows, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
