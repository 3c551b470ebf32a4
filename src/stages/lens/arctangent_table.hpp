#pragma once

namespace biseam {

// atan(i / 255) for i = 0 .. 255; entry 256 repeats pi/4 so that an interpolation at the top end has a right-hand neighbour.
struct ArctangentTable {
  static constexpr int kSteps = 255;
  float values[kSteps + 2];
};

// Arctangent of x in [0, 1] in double, good to a few units of the last place: far inside the half unit of the float that the
// table stores, for every entry.
constexpr double arctangent_of_ratio(double x) {
  constexpr double quarter_pi = 0.78539816339744830962;
  constexpr int last_term = 49;  // 0.4143^49 / 49 is below 2^-67
  // Arguments past tan(pi/8) are reflected, so that the series always sees |z| < 0.4143.
  const bool reflected = x > 0.41421356237309503;
  const double z = reflected ? (1.0 - x) / (1.0 + x) : x;
  double sum = 0.0;
  for (int n = last_term; n > 0; n -= 2) sum = 1.0 / n - z * z * sum;
  return reflected ? quarter_pi - z * sum : z * sum;
}

constexpr ArctangentTable make_arctangent_table() {
  constexpr int last = ArctangentTable::kSteps;
  ArctangentTable table{};
  for (int i = 0; i <= last; ++i) table.values[i] = static_cast<float>(arctangent_of_ratio(static_cast<double>(i) / last));
  table.values[last + 1] = table.values[last];
  return table;
}

inline constexpr ArctangentTable kArctangents = make_arctangent_table();

}  // namespace biseam
