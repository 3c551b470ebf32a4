#include "ring/near/shift_rows.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/guarded_block.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

TEST(ShiftRow, TakesEachLensFromItsSide) {
  RandomSource random;
  for (const int width : {13, 28, 56, 512}) {
    for (int run = 0; run < 100; ++run) {
      const int32_t displacement = run == 0 ? 0 : run < 5 ? (run % 3) << 16 : random.between(0, (width / 6) << 16);
      for (const int lens : {0, 1}) {
        GuardedBlock<int16_t> row(static_cast<std::size_t>(width));
        for (int b = 0; b < width; ++b) row[static_cast<std::size_t>(b)] = static_cast<int16_t>(random.between(0, kMaxFine));
        const std::vector<int16_t> before(row.data(), row.data() + width);
        shift_row(lens, displacement, row.data(), width);
        const double by = std::floor(displacement / 256.0 + 0.5) / 256;
        const int edge = static_cast<int>(std::ceil(by));
        for (int b = 0; b < width; ++b) {
          const double place = std::clamp(b, edge, width - 1 - edge) + (lens == 0 ? by : -by), whole = std::floor(place);
          const double here = before[static_cast<std::size_t>(whole)];
          const double next = whole == place ? here : before[static_cast<std::size_t>(whole) + 1];
          ASSERT_EQ(row[static_cast<std::size_t>(b)], std::floor(here + (place - whole) * (next - here) + 0.5)) << b;
        }
      }
    }
  }
}

// A thing that is seen 2 d apart lies in one place afterwards.
TEST(ShiftRow, BringsTogetherWhatIsApart) {
  int16_t rows[2][40];
  for (int b = 0; b < 40; ++b) {
    rows[0][b] = static_cast<int16_t>(100 * (b - 3));
    rows[1][b] = static_cast<int16_t>(100 * (b + 3));
  }
  for (const int lens : {0, 1}) shift_row(lens, 3 << 16, rows[lens], 40);
  for (int b = 3; b < 37; ++b) EXPECT_EQ(rows[0][b], rows[1][b]);
  EXPECT_EQ(rows[0][20], 2000);
}

}  // namespace
}  // namespace biseam::test
