#pragma once

#include <bit>
#include <cstdint>

#include "base/truncate.hpp"
#include "stages/lens/arctangent_table.hpp"

// The lookup tables, and so every pixel of a panorama, depend on the exact results of these formulas: their accuracy
// (about 0.002 for the angle, 0.001 for the sine) is not to be improved.
namespace biseam {

inline constexpr float kPi = 3.1415927f;
inline constexpr float kHalfPi = 1.5707964f;
inline constexpr double kSmallRatio = 0.003921569;  // an angle below it is its own tangent

// Arctangent of ratio in [0, 1].  The table's step is 1/255 while the index is scaled by 256: the tables hold what this gives.
inline float table_arctangent(float ratio) noexcept {
  if (static_cast<double>(ratio) < kSmallRatio) return ratio;
  const float position = ratio * 256.0f - 0.5f;
  const uint32_t index = truncate_to_unsigned(position);  // a NaN ratio reads entry 0 and stays NaN
  const float left = kArctangents.values[index], right = kArctangents.values[index + 1];
  return left + (right - left) * (position - static_cast<float>(index));
}

// Four-quadrant arctangent of y / x in (-pi, pi]; a zero counts as non-negative whatever its sign, and 0, 0 gives 0.
inline float fast_arctangent(float y, float x) noexcept {
  if (y == 0.0f && x == 0.0f) return 0.0f;
  const float height = y > 0.0f ? y : -y, width = x > 0.0f ? x : -x;
  if (height < width) {
    const float angle = table_arctangent(height / width);  // from the x axis
    if (x < 0.0f) return y < 0.0f ? angle - kPi : kPi - angle;
    return y < 0.0f ? -angle : angle;
  }
  const float angle = table_arctangent(width / height);  // from the y axis
  if (y < 0.0f) return x < 0.0f ? -kHalfPi - angle : angle - kHalfPi;
  return x < 0.0f ? kHalfPi + angle : kHalfPi - angle;
}

// Two Newton steps from a bit-level estimate of the inverse root; zero gives 0, negative values mean nothing.
inline float fast_square_root(float x) noexcept {
  const float half = 0.5f * x;
  const uint32_t halved_bits = static_cast<uint32_t>(std::bit_cast<int32_t>(x) >> 1);
  const float estimate = std::bit_cast<float>(0x5F3759DFu - halved_bits);
  const float once = estimate * (1.5f - half * estimate * estimate);
  const float twice = once * (1.5f - half * once * once);
  return twice * x;
}

// Sine of x in [-pi, pi]: a parabola through the zeros and peaks, then one refinement.
inline double parabolic_sine(double x) noexcept {
  const double y = x >= 0.0 ? (1.27323954 - 0.405284735 * x) * x : (1.27323954 + 0.405284735 * x) * x;
  return y >= 0.0 ? y * (1.0 + 0.225 * (y - 1.0)) : y * (1.0 - 0.225 * (y + 1.0));
}

// x in [-pi, 2 pi).
inline double fast_sine(double x) noexcept { return x >= 3.14159265 ? -parabolic_sine(x - 3.14159265) : parabolic_sine(x); }

// x in [-3/2 pi, 7/2 pi).
inline double fast_cosine(double x) noexcept {
  double shifted = x + 1.570796325;
  if (shifted > 6.2831853) shifted -= 6.2831853;
  return fast_sine(shifted);
}

}  // namespace biseam
