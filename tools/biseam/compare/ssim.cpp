#include "compare/ssim.hpp"

#include <array>
#include <cmath>
#include <limits>

namespace biseam::tool {
namespace {

constexpr std::size_t kTaps = kSsimWindow, kReach = kTaps / 2;

std::array<double, kTaps> gaussian() {
  std::array<double, kTaps> taps{};
  double sum = 0;
  for (std::size_t k = 0; k < kTaps; ++k) {
    const double at = double(k) - double(kReach);
    sum += taps[k] = std::exp(-at * at / (2 * 1.5 * 1.5));
  }
  for (double& tap : taps) tap /= sum;
  return taps;
}

// Weighted means over a window.
struct Moments {
  double a = 0, b = 0, aa = 0, bb = 0, ab = 0;

  void add(const Moments& m, double weight) {
    a += weight * m.a;
    b += weight * m.b;
    aa += weight * m.aa;
    bb += weight * m.bb;
    ab += weight * m.ab;
  }
};

double similarity(const Moments& m) {
  constexpr double c1 = (0.01 * 255) * (0.01 * 255), c2 = (0.03 * 255) * (0.03 * 255);
  const double variance_a = m.aa - m.a * m.a, variance_b = m.bb - m.b * m.b, covariance = m.ab - m.a * m.b;
  return (2 * m.a * m.b + c1) * (2 * covariance + c2) / ((m.a * m.a + m.b * m.b + c1) * (variance_a + variance_b + c2));
}

// Moments of the row windows around columns kReach .. width - kReach - 1.
void filter_row(const float* a, const float* b, const std::array<double, kTaps>& taps, std::vector<Moments>& row) {
  for (std::size_t x = 0; x < row.size(); ++x) {
    Moments sum;
    for (std::size_t k = 0; k < kTaps; ++k) {
      const double p = double(a[x + k]), q = double(b[x + k]);
      sum.add({p, q, p * p, q * q, p * q}, taps[k]);
    }
    row[x] = sum;
  }
}

}  // namespace

double structural_similarity(const LumaPair& pair, const Columns& columns) {
  const auto width = std::size_t(pair.size.width), height = std::size_t(pair.size.height);
  if (width < kTaps || height < kTaps) return std::numeric_limits<double>::quiet_NaN();
  const std::array<double, kTaps> taps = gaussian();
  std::array<std::vector<Moments>, kTaps> rows;  // of the last kTaps picture rows
  rows.fill(std::vector<Moments>(width - 2 * kReach));
  double sum = 0, count = 0;
  for (std::size_t y = 0; y < height; ++y) {
    filter_row(&pair.a[y * width], &pair.b[y * width], taps, rows[y % kTaps]);
    if (y + 1 < kTaps) continue;
    for (std::size_t x = 0; x < width - 2 * kReach; ++x) {
      if (!columns[x + kReach]) continue;
      Moments window;
      for (std::size_t k = 0; k < kTaps; ++k) window.add(rows[(y + 1 + k) % kTaps][x], taps[k]);
      sum += similarity(window);
      ++count;
    }
  }
  return count > 0 ? sum / count : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace biseam::tool
