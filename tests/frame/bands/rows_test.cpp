// The row kernels' versions against the formulas, over all there is where that can be counted.
#include "frame/bands/rows.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "frame/bands/rows_kernels.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

int rounded(double value) {
  const float single = static_cast<float>(value);
  const int whole = static_cast<int>(single + 0.5);
  return whole < 0 ? 0 : whole > 255 ? 255 : whole;
}

// ---- Every luma with every chroma pair ---------------------------------------------------------------------------------

// Red, green and blue of all 256 lumas, for one pair.
std::vector<int32_t> colours_of_pair(int u, int v) {
  const double red = 1.402 * (v - 128), green_u = 0.3441 * (u - 128), green_v = 0.7141 * (v - 128), blue = 1.772 * (u - 128);
  std::vector<int32_t> rgb;
  for (int y = 0; y < 256; ++y) {
    rgb.insert(rgb.end(), {rounded(y + red), rounded(y - green_u - green_v), rounded(y + blue)});
  }
  return rgb;
}

class EveryColour : public testing::TestWithParam<Isa> {
 protected:
  void SetUp() override {
    for (int y = 0; y < 256; ++y) luma_[y] = static_cast<uint8_t>(y);
  }

  // Compares a row of 256 pixels, all with one pair, for all 65536 pairs.
  template <class Sample, class Convert>
  void check(Convert convert) {
    std::vector<Sample> rgb(768);
    uint8_t chroma[256];
    for (int u = 0; u < 256; ++u) {
      for (int v = 0; v < 256; ++v) {
        for (int i = 0; i < 256; ++i) chroma[i] = static_cast<uint8_t>(i % 2 == 0 ? u : v);
        const std::vector<int32_t> want = colours_of_pair(u, v);
        convert(luma_, chroma, rgb.data());
        ASSERT_TRUE(std::equal(want.begin(), want.end(), rgb.begin())) << "u " << u << " v " << v;
      }
    }
  }

  uint8_t luma_[256];
};

TEST_P(EveryColour, ToIntegerRgb) {
  Yuv422RowToRgb<int32_t>* const convert = kYuv422RowToIntegerRgb.of(GetParam());
  check<int32_t>([&](const uint8_t* luma, const uint8_t* chroma, int32_t* rgb) { convert(luma, chroma, rgb, 128); });
}

TEST_P(EveryColour, TwoRowsToByteRgb) {
  Yuv420RowsToRgb<uint8_t>* const convert = kYuv420RowsToByteRgb.of(GetParam());
  std::vector<uint8_t> lower(768);
  check<uint8_t>([&](const uint8_t* luma, const uint8_t* chroma, uint8_t* rgb) {
    convert(luma, luma, chroma, lower.data(), rgb, 128);
    ASSERT_EQ(0, std::memcmp(lower.data(), rgb, 768));
  });
}

// Those with versions that this host can run.
std::vector<Isa> isas_here() {
  std::vector<Isa> isas;
  for (const Isa isa : kIsas) {
    if (can_run(isa)) isas.push_back(isa);
  }
  return isas;
}

std::string isa_name(const testing::TestParamInfo<Isa>& info) { return name_of(info.param); }
INSTANTIATE_TEST_SUITE_P(Versions, EveryColour, testing::ValuesIn(isas_here()), isa_name);

// ---- To luma and chroma ------------------------------------------------------------------------------------------------

class ToYuv : public testing::TestWithParam<Isa> {
 protected:
  // All lumas of samples whose whole parts are first, first + step and so on, up to end.
  void check_lumas(int first, int end, int step) {
    std::vector<int32_t> row;
    std::vector<uint8_t> luma;
    for (int r = first; r < end; r += step) {
      for (int g = first; g < end; g += step) {
        row.clear();
        for (int b = first; b < end; b += step) row.insert(row.end(), {r * 64, g * 64 + 63, b * 64 + 31});
        const int count = static_cast<int>(row.size() / 3);
        luma.assign(row.size() / 3, 7);
        luma_(row.data(), luma.data(), count);
        for (int i = 0; i < count; ++i) {
          const int b = first + i * step;
          ASSERT_EQ(rounded(0.299 * r + 0.587 * g + 0.114 * b), luma[size_t(i)]) << r << ' ' << g << ' ' << b;
        }
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

TEST_P(ToYuv, LumaOfEveryColour) { check_lumas(0, 256, 1); }
TEST_P(ToYuv, LumaOfSampledOvershoot) { check_lumas(-300, 556, 13); }
TEST_P(ToYuv, LumaOfAllSixteenBits) { check_lumas(-32768, 32768, 1021); }
TEST_P(ToYuv, ChromaOfSampledSums) { check_chromas(0, 1021, 17); }
TEST_P(ToYuv, ChromaOfSampledOvershoot) { check_chromas(-1200, 2224, 59); }
TEST_P(ToYuv, ChromaOfAllSixteenBits) { check_chromas(-32768, 32768, 1021); }

// All 10^9 of them, for minutes: --gtest_also_run_disabled_tests --gtest_filter='*EverySum*'.
TEST_P(ToYuv, DISABLED_ChromaOfEverySum) { check_chromas(0, 1021, 1); }

INSTANTIATE_TEST_SUITE_P(Versions, ToYuv, testing::ValuesIn(isas_here()), isa_name);

// ---- Rows that overlap -------------------------------------------------------------------------------------------------

// What single reads and writes in order give, where the second row of pixels starts some samples behind the first.
template <class Sample>
void check_overlapping_rows(int distance) {
  constexpr int pairs = 70;
  RandomSource random;
  std::vector<uint8_t> luma(4 * pairs), chroma(2 * pairs);
  for (uint8_t& y : luma) y = random.byte();
  for (uint8_t& c : chroma) c = random.byte();
  std::vector<Sample> want(12 * pairs), got(12 * pairs);
  const uint8_t *upper = luma.data(), *lower = luma.data() + 2 * pairs;
  for (int i = 0; i < pairs; ++i) {
    for (const auto& [row, start] : {std::pair{upper, 0}, {lower, distance}}) {
      for (int x = 2 * i; x < 2 * i + 2; ++x) {
        yuv_to_rgb_pixel(row[x], chroma[size_t(2 * i)], chroma[size_t(2 * i + 1)], want.data() + start + 3 * x);
      }
    }
  }
  yuv420_rows_to_rgb(upper, lower, chroma.data(), got.data(), got.data() + distance, pairs);
  EXPECT_EQ(want, got) << distance;
}

TEST(RowsThatOverlap, TheLastBlockWrittenWins) {
  for (const int distance : {0, 1, 3, 6, 47, 48, 96, 100, 6 * 70 - 1, 6 * 70}) {
    check_overlapping_rows<int32_t>(distance);
    check_overlapping_rows<uint8_t>(distance);
  }
}

TEST(RowsThatOverlap, PixelsOverTheirOwnLuma) {
  RandomSource random;
  std::vector<uint8_t> want(600), chroma(100);
  for (uint8_t& y : want) y = random.byte();
  for (uint8_t& c : chroma) c = random.byte();
  std::vector<uint8_t> got = want;
  for (int x = 0; x < 100; ++x) {
    yuv_to_rgb_pixel(want[size_t(200 + x)], chroma[size_t(x / 2 * 2)], chroma[size_t(x / 2 * 2 + 1)], &want[size_t(3 * x)]);
  }
  yuv422_row_to_rgb(got.data() + 200, chroma.data(), got.data(), 50);
  EXPECT_EQ(want, got);
}

TEST(RowsThatOverlap, LumaAndChromaOverTheirOwnPixels) {
  RandomSource random;
  std::vector<int32_t> pixels(6 * 100);
  for (int32_t& sample : pixels) sample = random.between(0, 64 * 255);
  std::vector<int32_t> want = pixels, got = pixels;
  auto* bytes = reinterpret_cast<uint8_t*>(want.data());
  for (int i = 0; i < 200; ++i) {
    const int32_t pixel[3] = {want[size_t(3 * i)], want[size_t(3 * i + 1)], want[size_t(3 * i + 2)]};
    rgb_row_to_luma_scalar(pixel, bytes + i, 1);
  }
  rgb_row_to_luma(got.data(), reinterpret_cast<uint8_t*>(got.data()), 200);
  EXPECT_EQ(want, got);

  want = got = pixels;
  bytes = reinterpret_cast<uint8_t*>(want.data());
  for (int i = 0; i < 100; ++i) {
    const ChromaPair pair = chroma422_of(&want[size_t(6 * i)], &want[size_t(6 * i + 3)]);
    bytes[2 * i] = pair.u;
    bytes[2 * i + 1] = pair.v;
  }
  rgb_row_to_chroma422(got.data(), reinterpret_cast<uint8_t*>(got.data()), 100);
  EXPECT_EQ(want, got);
}

TEST(RowsThatOverlap, NoPairsWriteNothing) {
  int32_t rgb[6] = {1, 2, 3, 4, 5, 6};
  uint8_t bytes[2] = {7, 8};
  for (const int count : {0, -1, INT_MIN}) {
    yuv420_rows_to_rgb(bytes, bytes, bytes, rgb, rgb, count);
    yuv422_row_to_rgb(bytes, bytes, rgb, count);
    rgb_row_to_luma(rgb, bytes, count);
    rgb_rows_to_chroma420(rgb, rgb, bytes, count);
    rgb_row_to_chroma422(rgb, bytes, count);
  }
  EXPECT_EQ(6, rgb[5]);
  EXPECT_EQ(7, bytes[0]);
}

}  // namespace
}  // namespace biseam::test
