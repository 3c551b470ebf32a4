#include "ring/strip/unroll_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <numbers>
#include <vector>

#include "ring/strip/fisheye_strip.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

namespace {

double spline(double distance) {
  const double d = std::abs(distance);
  return d >= 2 ? 0 : d >= 1 ? (2 - d) * (2 - d) * (2 - d) / 6 : 2 / 3.0 - d * d + d * d * d / 2;
}

}  // namespace

// Weights are within 1/2 of 1/4096 but for one of each four that takes what the others leave, up to 3/2: as they add up to 1,
// the result moves by at most half of 3/4096 of the range either way.  Two roundings add 1/2 each.
TEST(UnrollRow, IsACubicSplineAtTheNearestOf256Places) {
  RandomSource random;
  const double bound = 2 * 1.5 / 4096 * kMaxFine + 1;
  for (const int planes : {1, 2}) {
    const Reduction reduction = plan_reduction({200, 120, 1, 1, 0, 32768}, 4);
    std::vector<int16_t> samples[2];
    for (auto& s : samples) {
      s.resize(static_cast<size_t>(reduction.samples()));
      for (int16_t& value : s)
        value = static_cast<int16_t>(random.between(0, 1) != 0 ? random.between(0, kMaxFine) : random.between(0, 1) * kMaxFine);
    }
    constexpr int count = 1003;
    std::vector<int32_t> x(count), y(count);
    for (int32_t& v : x) v = random.between(-20 << 16, 220 << 16);
    for (int32_t& v : y) v = random.between(-20 << 16, 140 << 16);
    std::vector<int16_t> got[2] = {std::vector<int16_t>(count), std::vector<int16_t>(count)};
    int16_t* const out[2] = {got[0].data(), got[1].data()};
    kUnrollRow.best()({reduction.x, reduction.y, reduction.stride(), planes, {samples[0].data(), samples[1].data()}}, x.data(),
                      y.data(), out, count);
    for (int plane = 0; plane < planes; ++plane) {
      for (int i = 0; i < count; ++i) {
        // Sample j lies at pixel 4 j + 1.5, and half a pixel further down.
        const auto index = [](double place, int last) {
          return std::clamp(std::floor(place * 256 + 0.5), -256.0, 256.0 * last - 1) / 256;
        };
        const double at_x = index((x[i] / 65536.0 - 1.5) / 4, 50), at_y = index((y[i] / 65536.0 - 2.0) / 4, 30);
        double sum = 0;
        for (int row = static_cast<int>(std::floor(at_y)) - 1; row <= std::floor(at_y) + 2; ++row) {
          for (int column = static_cast<int>(std::floor(at_x)) - 1; column <= std::floor(at_x) + 2; ++column) {
            sum += spline(at_x - column) * spline(at_y - row) *
                   samples[plane][static_cast<size_t>((row + 2) * reduction.stride() + column + 2)];
          }
        }
        ASSERT_LE(std::abs(sum - got[static_cast<size_t>(plane)][static_cast<size_t>(i)]), bound) << x[i] << " " << y[i];
      }
    }
  }
}

TEST(UnrollRow, WeightsAddUpExactly) {
  for (const auto& weights : kSplineTable.weights) {
    EXPECT_EQ(kSplineOne, weights[0] + weights[1] + weights[2] + weights[3]);
    for (const int16_t weight : weights) EXPECT_GE(weight, 0);
  }
  for (int u = 1; u < 256; ++u) {
    for (int k = 0; k < 4; ++k) EXPECT_EQ(kSplineTable.weights[u][k], kSplineTable.weights[256 - u][3 - k]);
  }
}

namespace {

// What the strip shows of a wave of so many cycles a pixel along x, 120 codes high: the amplitude at the wave's own frequency
// and the greatest deviation from it, over all places between samples, in codes.
struct Response {
  double amplitude, deviation;
};

Response response_to(double frequency) {
  constexpr int size = 512;
  const auto wave = [&](double x) { return 2 * std::numbers::pi * frequency * x; };
  std::vector<uint8_t> picture(size * size);
  RandomSource random;
  // Rounded at random, so that rounding is no pattern: it is noise that the reduction averages away.
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      picture[static_cast<size_t>(y * size + x)] =
          static_cast<uint8_t>(std::floor(127.5 + 120 * std::cos(wave(x)) + random.real_between(0, 1)));
    }
  }
  const Reduction reduction = plan_reduction({size, size, 1, 1, 0, 0}, 4);
  std::vector<uint8_t> needed(static_cast<size_t>(reduction.tile_count()), 1);
  std::vector<int16_t> reduced(static_cast<size_t>(reduction.samples())), strip(2000);
  for (int part = 0; part < reduction.parts(); ++part)
    reduce_part(reduction, {picture.data(), size, 1}, {8, 0}, needed.data(), part, reduced.data());
  std::vector<int32_t> x(2000), y(2000);
  for (size_t i = 0; i < x.size(); ++i) {
    x[i] = random.between(40 << 16, 470 << 16);
    y[i] = random.between(40 << 16, 470 << 16);
  }
  int16_t* const out[2] = {strip.data(), nullptr};
  kUnrollRow.best()({reduction.x, reduction.y, reduction.stride(), 1, {reduced.data(), nullptr}}, x.data(), y.data(), out,
                    2000);
  double dot = 0, norm = 0;
  for (size_t i = 0; i < x.size(); ++i) {
    const double c = std::cos(wave(x[i] / 65536.0));
    dot += c * (strip[i] / 64.0 - 127.5);
    norm += c * c;
  }
  Response response{dot / norm, 0};
  for (size_t i = 0; i < x.size(); ++i) {
    response.deviation =
        std::max(response.deviation, std::abs(strip[i] / 64.0 - 127.5 - response.amplitude * std::cos(wave(x[i] / 65536.0))));
  }
  return response;
}

double sinc(double f) { return f == 0 ? 1 : std::sin(std::numbers::pi * f) / (std::numbers::pi * f); }

// The wave as it passes both halvings and the spline over samples 4 pixels apart.
double passed(double f, double seen_at) {
  const double pi = std::numbers::pi;
  return std::pow(std::cos(pi * f), 3) * std::pow(std::cos(2 * pi * f), 3) * std::pow(sinc(4 * seen_at), 4);
}

}  // namespace

// Sampling shows a wave of frequency f at f and, weaker, at all f + k/4: what is not at f is false.  Weights in 1/4096 and
// places in 1/256 of 4 pixels add at most (120 codes) (2 * 1.5 / 4096 + 2 pi 4 f / 512), rounding and what is left of the noise
// 0.35.
TEST(UnrollRow, ShowsWavesAsTheIdealFilterDoesAndFewFalseOnes) {
  for (const double f : {0.0, 1 / 64.0, 1 / 32.0, 1 / 22.6, 1 / 16.0, 0.0885, 0.125, 0.1875, 0.25, 0.375, 0.5}) {
    const Response response = response_to(f);
    double false_waves = 0;
    for (int k = -8; k <= 8; ++k) {
      if (k != 0) false_waves += 120 * std::abs(passed(f, f + k / 4.0));
    }
    const double slack = 120 * (2 * 1.5 / 4096 + 2 * std::numbers::pi * 4 * f / 512 * std::abs(passed(f, f))) + 0.35;
    std::cout << "f " << f << " amplitude " << response.amplitude / 120 << " ideal " << passed(f, f) << " deviation "
              << response.deviation << " codes, bound " << false_waves + slack << "\n";
    EXPECT_LE(response.deviation, false_waves + slack);
    // Two thirds of what neighbours 5.6 pixels apart can show: hardly anything is false.  Nowhere much.
    if (f <= 1 / 16.0) {
      EXPECT_NEAR(response.amplitude / 120, passed(f, f), 0.002);
      EXPECT_LE(response.deviation, 0.01 * 120);
    }
    EXPECT_LE(response.deviation, 0.035 * 120);
  }
}

}  // namespace biseam::test
