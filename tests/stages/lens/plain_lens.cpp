#include "stages/lens/plain_lens.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace biseam::test {

namespace {

float table_value(int i) { return static_cast<float>(std::atan((i > 255 ? 255 : i) / 255.0)); }

float ratio_angle(float ratio) {
  if (static_cast<double>(ratio) < 0.003921569) return ratio;
  const float scaled = ratio * 256.0f;
  const float t = scaled - 0.5f;
  const int i = static_cast<int>(std::floor(t));
  const float rise = table_value(i + 1) - table_value(i);
  const float part = t - static_cast<float>(i);
  return table_value(i) + rise * part;
}

uint32_t bits_of(float x) {
  uint32_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return bits;
}

float with_sign(float magnitude, bool negative) { return negative ? -magnitude : magnitude; }

}  // namespace

float plain_arctangent(float y, float x) {
  if (y == 0.0f && x == 0.0f) return 0.0f;
  const float pi = 3.1415927f, half = 1.5707964f;
  const float ay = std::fabs(y), ax = std::fabs(x);
  const bool up = !(y < 0.0f), right = !(x < 0.0f);
  if (ay < ax) {
    const float phi = ratio_angle(ay / ax);
    return up ? (right ? phi : pi - phi) : (right ? -phi : phi - pi);
  }
  const float phi = ratio_angle(ax / ay);
  return up ? (right ? half - phi : half + phi) : (right ? phi - half : -half - phi);
}

double plain_sine(double x) {
  double sign = 1.0;
  if (x >= 3.14159265) {
    x = x - 3.14159265;
    sign = -1.0;
  }
  double y;
  if (x >= 0) {
    y = (1.27323954 - 0.405284735 * x) * x;
  } else {
    y = (1.27323954 + 0.405284735 * x) * x;
  }
  double result;
  if (y >= 0) {
    result = y * (1 + 0.225 * (y - 1));
  } else {
    result = y * (1 - 0.225 * (y + 1));
  }
  return sign * result;
}

double plain_cosine(double x) {
  const double a = x + 1.570796325;
  return plain_sine(a > 6.2831853 ? a - 6.2831853 : a);
}

float plain_reciprocal_estimate(float x) {
  const bool negative = (bits_of(x) >> 31) != 0;
  const double magnitude = std::fabs(static_cast<double>(x));
  if (std::isnan(x)) return std::numeric_limits<float>::quiet_NaN();
  if (magnitude < std::ldexp(1.0, -126)) return with_sign(std::numeric_limits<float>::infinity(), negative);
  if (magnitude >= std::ldexp(1.0, 126)) return with_sign(0.0f, negative);
  int exponent;
  const double scaled = std::frexp(magnitude, &exponent);  // in [0.5, 1)
  const double step = std::floor(scaled * 512.0);
  const double reciprocal = 1.0 / ((step + 0.5) / 512.0);
  const double estimate = std::floor(256.0 * reciprocal + 0.5) / 256.0;
  return with_sign(static_cast<float>(std::ldexp(estimate, -exponent)), negative);
}

float plain_root_estimate(float x) {
  const double magnitude = std::fabs(static_cast<double>(x));
  if (std::isnan(x)) return std::numeric_limits<float>::quiet_NaN();
  if (magnitude < std::ldexp(1.0, -126)) {
    return with_sign(std::numeric_limits<float>::infinity(), (bits_of(x) >> 31) != 0);
  }
  if (x < 0.0f) return std::numeric_limits<float>::quiet_NaN();
  if (std::isinf(x)) return 0.0f;
  int exponent;
  double scaled = std::frexp(magnitude, &exponent);
  if (exponent % 2 != 0) {  // an even power of two outside, so that its root is exact
    scaled /= 2;
    ++exponent;
  }
  const double steps = scaled < 0.5 ? 512.0 : 256.0;
  const double root = 1.0 / std::sqrt((std::floor(scaled * steps) + 0.5) / steps);
  const double estimate = std::floor(256.0 * root + 0.5) / 256.0;
  return static_cast<float>(std::ldexp(estimate, -exponent / 2));
}

SourcePosition plain_entry(const LensRecord& lens, int row, int column) {
  const float theta = -1.5707964f + static_cast<float>(row + 1) * lens.row_step + lens.row_offset;
  const float sine = static_cast<float>(std::sin(static_cast<double>(theta)));
  const float cosine = static_cast<float>(std::cos(static_cast<double>(theta)));
  float phi = -1.5707964f + static_cast<float>(column / 4 * 4 + 1) * lens.column_step + lens.column_offset;
  for (int lane = 0; lane < column % 4; ++lane) phi = phi + lens.column_step;

  const float x = static_cast<float>(plain_sine(phi) * cosine);
  const float y = sine;
  const float z = static_cast<float>(plain_cosine(phi) * cosine);
  const float n = x * x + y * y;
  const float inv_r = plain_root_estimate(n);
  const float r = plain_reciprocal_estimate(inv_r);
  const float ratio = plain_reciprocal_estimate(z) * r;
  float alpha = plain_arctangent(ratio, 1.0f);
  if (alpha < 0.0f) alpha += 3.1415927f;
  const float rho = (lens.focal * lens.focus) * alpha;
  const float a = (x * inv_r) * rho, b = (y * inv_r) * rho;
  const float* m = lens.matrix;
  const float u = m[0] * a + m[1] * b + m[2] * z + lens.cx, v = m[3] * a + m[4] * b + m[5] * z + lens.cy;
  const float nan = std::numeric_limits<float>::quiet_NaN();  // of one sign on every host
  return {std::isnan(u) ? nan : u, std::isnan(v) ? nan : v};
}

StitchConfig lens_config(int width, int height, int feather) {
  StitchConfig config{};
  config.in_h = height;
  config.out_h[0] = height;
  config.out_w[0] = width;
  config.feather = feather;
  config.p0 = 301.5f;
  config.cx0 = 480.25f;
  config.cy0 = 479.5f;
  config.p1 = 298.75f;
  config.cx1 = 481.5f;
  config.cy1 = 478.125f;
  const float matrix[9] = {0.98f, -0.07f, 3.5f, 0.05f, 1.01f, -2.25f, 9e9f, -9e9f, 9e9f};
  std::copy_n(matrix, 9, config.lens_matrix);
  config.change_focus = 1.015f;
  return config;
}

LensRecord plain_lens(const StitchConfig& config, int strip) {
  const int w = config.out_w[0], f = config.feather, q = w / 4, t = (3 * w) / 4;
  LensRecord lens{};
  lens.column_step = static_cast<float>(6.283185307179586 / w);
  lens.row_step = static_cast<float>(3.141592653589793 / config.out_h[0]);
  lens.rows = config.out_h[0];
  lens.focus = config.change_focus;
  lens.focal = strip == 1 ? config.p1 : config.p0;
  lens.cx = strip == 1 ? config.cx1 : config.cx0;
  lens.cy = strip == 1 ? config.cy1 : config.cy0;
  for (int i = 0; i < 9; ++i) lens.matrix[i] = strip == 1 ? config.lens_matrix[i] : (i % 4 == 0 ? 1.0f : 0.0f);
  if (strip == 0) {
    lens.width = f + q;
    lens.column_offset = 1.5707964f;
  } else if (strip == 1) {
    lens.width = f + t - (q - f);
    const float product = (q - f) * lens.column_step;
    lens.column_offset = static_cast<float>(product - 1.5707963267948966);
  } else {
    lens.width = w - (t - f);
    const float product = (t - f) * lens.column_step;
    lens.column_offset = static_cast<float>(product - 4.71238898038469);
  }
  return lens;
}

}  // namespace biseam::test
