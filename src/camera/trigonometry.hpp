// Sine, cosine and arc tangent in double, in a fixed order of operations: the same bits on every host.  Errors are below 1e-15
// for results up to 1, and in proportion above.  Without branches, so that loops over them become vector code.
#pragma once

#include <cmath>
#include <cstdint>

namespace biseam {

inline constexpr double kPi = 0x1.921fb54442d18p+1;
inline constexpr double kDegree = kPi / 180;

struct SineCosine {
  double sine, cosine;
};

// |angle| <= 1e6 radians.
inline SineCosine sine_cosine(double angle) noexcept {
  // Pi / 2 in three parts, the first two of 33 bits, so that their multiples are exact.
  constexpr double kHigh = 0x1.921fb544p+0, kMiddle = 0x1.0b4611a6p-34, kLow = 0x1.3198a2e037073p-69;
  const double turns = angle * (2 / kPi);
  const int32_t quarter = static_cast<int32_t>(turns + (turns < 0 ? -0.5 : 0.5));
  const double x = ((angle - quarter * kHigh) - quarter * kMiddle) - quarter * kLow, u = x * x;
  // Taylor's series: what is left out is below 1e-16 for |x| <= pi / 4.
  double s = -1.0 / 1307674368000.0;
  s = s * u + 1.0 / 6227020800.0;
  s = s * u - 1.0 / 39916800.0;
  s = s * u + 1.0 / 362880.0;
  s = s * u - 1.0 / 5040.0;
  s = s * u + 1.0 / 120.0;
  s = s * u - 1.0 / 6.0;
  s = x + x * (u * s);
  double c = 1.0 / 20922789888000.0;
  c = c * u - 1.0 / 87178291200.0;
  c = c * u + 1.0 / 479001600.0;
  c = c * u - 1.0 / 3628800.0;
  c = c * u + 1.0 / 40320.0;
  c = c * u - 1.0 / 720.0;
  c = c * u + 1.0 / 24.0;
  c = (1 - 0.5 * u) + u * (u * c);
  const bool odd = (quarter & 1) != 0;
  const double sine = odd ? c : s, cosine = odd ? s : c;
  return {(quarter & 2) != 0 ? -sine : sine, ((quarter + 1) & 2) != 0 ? -cosine : cosine};
}

// The angle of the point (x, y) from the x axis towards the y axis, -pi .. pi.  (0, 0) gives 0; the sign of a zero counts for
// nothing.
inline double arctangent(double y, double x) noexcept {
  constexpr double kTanEighth = 0x1.a827999fcef32p-2;  // of pi / 8
  const double ax = x < 0 ? -x : x, ay = y < 0 ? -y : y;
  const double large = ax < ay ? ay : ax, small = ax < ay ? ax : ay;
  const bool upper = small > kTanEighth * large;
  const double numerator = upper ? small - large : small, sum = upper ? small + large : large;
  const double q = numerator / (sum == 0 ? 1 : sum), u = q * q;
  // Through 11 Chebyshev nodes of the arc tangent on 0 .. tan(pi / 8), within 2e-17.
  double r = 0x1.5a482e20112ecp-6;
  r = r * u - 0x1.64314395b2626p-5;
  r = r * u + 0x1.d1fd545f28ae3p-5;
  r = r * u - 0x1.0ffbe63b09941p-4;
  r = r * u + 0x1.3afb01bbe7601p-4;
  r = r * u - 0x1.745baa2843f92p-4;
  r = r * u + 0x1.c71c648aca6a2p-4;
  r = r * u - 0x1.2492490095732p-3;
  r = r * u + 0x1.9999999934e50p-3;
  r = r * u - 0x1.55555555551e4p-2;
  r = q + q * (u * r);
  r = upper ? kPi / 4 + r : r;
  r = ax < ay ? kPi / 2 - r : r;
  r = x < 0 ? kPi - r : r;
  return y < 0 ? -r : r;
}

}  // namespace biseam
