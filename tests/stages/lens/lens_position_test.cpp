#include <gtest/gtest.h>

#include <cmath>

#include "biseam/biseam.h"
#include "stages/lens/plain_lens.hpp"
#include "support/guarded.hpp"

namespace biseam::test {
namespace {

LensRecord make_lens(int width, int rows) {
  LensRecord lens{};
  lens.focal = 300.0f;
  lens.cx = 480.0f;
  lens.cy = 479.0f;
  lens.column_step = static_cast<float>(6.283185307179586 / width);
  lens.row_step = static_cast<float>(3.141592653589793 / rows);
  lens.width = width / 2;
  lens.rows = rows;
  lens.focus = 1.0f;
  for (int i = 0; i < 9; i += 4) lens.matrix[i] = 1.0f;
  return lens;
}

SourcePosition position(float x, float y, LensRecord& lens) {
  SourcePosition result{};
  equidist2equirectangle(x, y, &result.u, &result.v, &lens);
  return result;
}

// The mapping with floats stored and the C library's functions in double.
SourcePosition plain_position(float x, float y, const LensRecord& lens) {
  const float theta = -1.5707964f + (y + 1.0f) * lens.row_step + lens.row_offset;
  const float phi = -1.5707964f + (x + 1.0f) * lens.column_step + lens.column_offset;
  const float px = static_cast<float>(std::sin(double{phi}) * std::cos(double{theta}));
  const float py = static_cast<float>(std::sin(double{theta}));
  const float pz = static_cast<float>(std::cos(double{phi}) * std::cos(double{theta}));
  const float r = std::sqrt(px * px + py * py);
  float alpha;
  if (std::abs(double{pz}) <= 1e-13) {
    alpha = 1.5707964f;
  } else {
    const float ratio = r / pz;
    alpha = static_cast<float>(std::atan(double{ratio}));
    if (alpha < 0) alpha = alpha + 3.1415927f;
  }
  const float rho = lens.focal * alpha * lens.focus;
  float a = 0, b = 0;
  if (double{r} > 1e-13) {
    a = rho * px / r;
    b = rho * py / r;
  }
  const float* m = lens.matrix;
  return {m[0] * a + m[1] * b + m[2] * pz + lens.cx, m[3] * a + m[4] * b + m[5] * pz + lens.cy};
}

TEST(Equidist2Equirectangle, EqualsThePlainFormula) {
  const unsigned seed = 20502;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  Random random(seed);
  LensRecord lens = make_lens(640, 320);
  for (int i = 0; i < 20000; ++i) {
    lens.column_offset = pick(random, -1.0f, 1.0f);
    lens.row_offset = pick(random, -0.1f, 0.1f);
    lens.focus = pick(random, 0.8f, 1.2f);
    for (float& entry : lens.matrix) entry = pick(random, -1.0f, 1.0f);
    const float x = pick(random, -20.0f, 340.0f), y = pick(random, -3.0f, 330.0f);
    const SourcePosition expected = plain_position(x, y, lens), result = position(x, y, lens);
    ASSERT_EQ(result.u, expected.u) << x << ", " << y;
    ASSERT_EQ(result.v, expected.v) << x << ", " << y;
  }
}

TEST(Equidist2Equirectangle, OnTheAxisIsTheCentre) {
  LensRecord lens = make_lens(640, 256);
  lens.column_offset = 1.5707964f;
  // Row 127 of 256 is the equator and column -1 the axis, both without rounding.
  const SourcePosition centre = position(-1.0f, 127.0f, lens);
  EXPECT_EQ(centre.u, lens.cx);
  EXPECT_EQ(centre.v, lens.cy);
}

TEST(Equidist2Equirectangle, PoleIsAQuarterTurnFromTheAxis) {
  LensRecord lens = make_lens(640, 256);
  const SourcePosition pole = position(100.0f, 255.0f, lens);
  EXPECT_NEAR(pole.v - lens.cy, lens.focal * 1.5707964f, 0.001);
  EXPECT_NEAR(pole.u - lens.cx, 0.0, 0.001);
}

TEST(Equidist2Equirectangle, DepthBelowTheLimitIsAQuarterTurn) {
  LensRecord lens = make_lens(640, 256);
  const SourcePosition pole = position(-1.0f, 255.0f, lens);  // both cosines about 4e-8: depth 2e-15
  EXPECT_EQ(pole.v, lens.focal * 1.5707964f + lens.cy);
}

TEST(Equidist2Equirectangle, BehindTheLensThePositionLiesPastAQuarterTurn) {
  LensRecord lens = make_lens(640, 256);
  lens.column_offset = 1.5707964f;
  const SourcePosition behind = position(199.0f, 127.0f, lens);  // 200 of 640 columns: 112.5 degrees
  EXPECT_NEAR(behind.u - lens.cx, lens.focal * 200 * 2 * 3.14159265 / 640, 0.001);
}

TEST(Equidist2Equirectangle, TheTablesFollowItToTheirPrecision) {
  LensRecord lens = make_lens(640, 320);
  lens.column_offset = 1.5707964f;
  std::vector<float> entries(2 * 160 * 320);
  MAPTIHeader map{entries.data()};
  LutBuilderArgs args{160, 320, &map, &lens, 0};
  CreateLUTTablePht(&args);
  for (int row = 0; row < 319; ++row) {
    for (int column = 0; column < 160; ++column) {
      const SourcePosition exact = position(static_cast<float>(column), static_cast<float>(row), lens);
      const float* entry = &entries[2 * (row * 160 + column)];
      ASSERT_NEAR(entry[0], exact.u, 6.0) << row << ", " << column;
      ASSERT_NEAR(entry[1], exact.v, 6.0) << row << ", " << column;
    }
  }
}

}  // namespace
}  // namespace biseam::test
