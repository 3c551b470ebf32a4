// Luma and chroma of samples and sums, in all versions, over all there is where that can be counted.
#include "frame/bands/to_yuv_rows.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/isas.hpp"

namespace biseam::test {
namespace {

int rounded(double value) {
  const float single = static_cast<float>(value);
  const int whole = static_cast<int>(single + 0.5);
  return whole < 0 ? 0 : whole > 255 ? 255 : whole;
}

class ToYuvRows : public testing::TestWithParam<Isa> {
 protected:
  // All lumas of samples whose whole parts are first, first + step and so on, up to end.
  void check_lumas(int first, int end, int step) {
    const int count = (end - first + step - 1) / step;
    const auto size = static_cast<std::size_t>(count);
    std::vector<int32_t> row(3 * size);
    std::vector<uint8_t> want(size), luma(size);
    for (int i = 0; i < count; ++i) row[size_t(3 * i + 2)] = (first + i * step) * 64 + 31;
    for (int r = first; r < end; r += step) {
      for (int g = first; g < end; g += step) {
        const double red_and_green = 0.299 * r + 0.587 * g;
        for (int i = 0; i < count; ++i) {
          row[size_t(3 * i)] = r * 64, row[size_t(3 * i + 1)] = g * 64 + 63;
          want[size_t(i)] = static_cast<uint8_t>(rounded(red_and_green + 0.114 * (first + i * step)));
        }
        luma.assign(size, 7);
        luma_(row.data(), luma.data(), count);
        ASSERT_EQ(want, luma) << "red " << r << " green " << g;
      }
    }
  }

  // The same for chroma of sums.
  void check_chromas(int first, int end, int step) {
    std::vector<int32_t> upper, lower;
    for (int r = first; r < end; r += step) {
      for (int g = first; g < end; g += step) {
        upper.clear();
        for (int b = first; b < end; b += step) upper.insert(upper.end(), {r * 64, g * 64 + 60, b * 64, 0, 3, 0});
        lower.assign(upper.size(), 0);
        ASSERT_NO_FATAL_FAILURE(check_chroma_rows(upper, lower, r, g, first, step));
      }
    }
  }

 private:
  void check_chroma_rows(const std::vector<int32_t>& upper, const std::vector<int32_t>& lower, int r, int g, int first,
                         int step) {
    const int pairs = static_cast<int>(upper.size() / 6);
    std::vector<uint8_t> four(upper.size() / 3), two(upper.size() / 3);
    chroma420_(upper.data(), lower.data(), four.data(), pairs);
    chroma422_(upper.data(), two.data(), pairs);
    for (int i = 0; i < pairs; ++i) {
      const int b = first + i * step;
      ASSERT_EQ(u_of(r * 0.25, g * 0.25, b * 0.25), four[size_t(2 * i)]) << "sums of four " << r << ' ' << g << ' ' << b;
      ASSERT_EQ(v_of(r * 0.25, g * 0.25, b * 0.25), four[size_t(2 * i + 1)]) << "sums of four " << r << ' ' << g << ' ' << b;
      ASSERT_EQ(u_of(r * 0.5, g * 0.5, b * 0.5), two[size_t(2 * i)]) << "sums of two " << r << ' ' << g << ' ' << b;
      ASSERT_EQ(v_of(r * 0.5, g * 0.5, b * 0.5), two[size_t(2 * i + 1)]) << "sums of two " << r << ' ' << g << ' ' << b;
    }
  }

  static int u_of(double r, double g, double b) { return rounded(-0.1687 * r - 0.3313 * g + 0.5 * b + 128.0); }
  static int v_of(double r, double g, double b) { return rounded(0.5 * r - 0.4187 * g - 0.0813 * b + 128.0); }

  RgbRowToLuma* luma_ = kRgbRowToLuma.of(GetParam());
  RgbRowsToChroma420* chroma420_ = kRgbRowsToChroma420.of(GetParam());
  RgbRowToChroma422* chroma422_ = kRgbRowToChroma422.of(GetParam());
};

TEST_P(ToYuvRows, LumaOfEveryColour) { check_lumas(0, 256, 1); }
TEST_P(ToYuvRows, LumaOfSampledOvershoot) { check_lumas(-300, 556, 13); }
TEST_P(ToYuvRows, LumaOfAllSixteenBits) { check_lumas(-32768, 32768, 1021); }
TEST_P(ToYuvRows, ChromaOfSampledSums) { check_chromas(0, 1021, 17); }
TEST_P(ToYuvRows, ChromaOfSampledOvershoot) { check_chromas(-1200, 2224, 59); }
TEST_P(ToYuvRows, ChromaOfAllSixteenBits) { check_chromas(-32768, 32768, 1021); }

// All 10^9 of them, for minutes: --gtest_also_run_disabled_tests --gtest_filter='*EverySum*'.
TEST_P(ToYuvRows, DISABLED_ChromaOfEverySum) { check_chromas(0, 1021, 1); }

TEST_P(ToYuvRows, NoPixelsWriteNothing) {
  int32_t rgb[6] = {};
  uint8_t bytes[2] = {7, 8};
  for (const int count : {0, -1, INT_MIN}) {
    kRgbRowToLuma.of(GetParam())(rgb, bytes, count);
    kRgbRowsToChroma420.of(GetParam())(rgb, rgb, bytes, count);
    kRgbRowToChroma422.of(GetParam())(rgb, bytes, count);
  }
  EXPECT_EQ(7, bytes[0]);
  EXPECT_EQ(8, bytes[1]);
}

INSTANTIATE_TEST_SUITE_P(Versions, ToYuvRows, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
