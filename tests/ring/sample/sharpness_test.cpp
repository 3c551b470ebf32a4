#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <numbers>
#include <random>
#include <vector>

#include "ring/sample/formulas.hpp"
#include "ring/sample/sample_row.hpp"

// What the kernels make of pictures whose truth is known everywhere.
namespace biseam::test {

using namespace ring;

namespace {

constexpr double kPi = std::numbers::pi;

// Plane waves of up to 0.3 cycles a pixel, weaker the finer they are, as pictures have them, and some soft edges.
class Scene {
 public:
  explicit Scene(double contrast) {
    std::mt19937 random(7);
    const auto real = [&random] { return static_cast<double>(random()) / 4294967296.0; };
    for (Wave& wave : waves_) {
      const double cycles = 0.02 + 0.28 * real(), angle = 2 * kPi * real();
      wave = {2 * kPi * cycles * std::cos(angle), 2 * kPi * cycles * std::sin(angle), 2 * kPi * real(),
              contrast * 0.1 / cycles};
    }
    for (Edge& edge : edges_) {
      const double angle = 2 * kPi * real();
      edge = {std::cos(angle), std::sin(angle), 400 * real() - 200, contrast * 4};
    }
  }

  double operator()(double x, double y) const {
    double sum = 128;
    for (const Wave& w : waves_) sum += w.size * std::cos(w.x * x + w.y * y + w.phase);
    for (const Edge& e : edges_) sum += e.size * std::erf((e.x * (x - 200) + e.y * (y - 200) - e.at) / 2.0);
    return sum;
  }

 private:
  struct Wave {
    double x, y, phase, size;
  } waves_[60];
  struct Edge {
    double x, y, at, size;
  } edges_[6];
};

struct Plane {
  int size;
  std::vector<uint8_t> bytes;

  template <class Value>
  Plane(int side, Value value) : size(side) {
    for (int y = 0; y < side; ++y) {
      for (int x = 0; x < side; ++x) {
        bytes.push_back(static_cast<uint8_t>(std::clamp(std::floor(value(x, y) + 0.5), 0.0, 255.0)));
      }
    }
  }

  SampleSource source() const { return {bytes.data(), size, size, size, SampleType::bytes, 8, 0}; }
};

struct Errors {
  double decibels, bias;
};

// At positions all over the picture, wherever a wave's phase may be.
Errors measure(const Scene& scene, const Plane& plane, Quality quality) {
  const AxisWeights& weights = axis_weights(quality, 0);
  std::mt19937 random(11);
  constexpr int count = 64, rows = 3000;
  double squares = 0, sum = 0;
  for (int row = 0; row < rows; ++row) {
    int32_t x[count], y[count];
    uint8_t out[count];
    for (int i = 0; i < count; ++i) {
      x[i] = static_cast<int32_t>((8u << 16) + random() % (384u << 16));
      y[i] = static_cast<int32_t>((8u << 16) + random() % (384u << 16));
    }
    sample_rows({plane.source(), &weights, &weights, SampleOutput::samples}, {x, y, count, out, count, count, 1});
    for (int i = 0; i < count; ++i) {
      const double error = out[i] - scene(x[i] / 65536.0, y[i] / 65536.0);
      squares += error * error, sum += error;
    }
  }
  return {10 * std::log10(255 * 255 / (squares / (count * rows))), sum / (count * rows)};
}

TEST(SharpnessAccuracy, OfAnAnalyticScene) {
  const Scene scene(2.9);
  const Plane plane(400, scene);
  constexpr double least[] = {46.0, 55.8, 56.2};
  for (int quality = 0; quality < 3; ++quality) {
    const Errors errors = measure(scene, plane, static_cast<Quality>(quality));
    std::printf("quality %d: %.2f dB, bias %.4f\n", quality, errors.decibels, errors.bias);
    EXPECT_GE(errors.decibels, least[quality]);
    EXPECT_LE(std::fabs(errors.bias), 0.02);
  }
}

// What a kernel of four taps misses of waves across a row, in the mean over all places between samples: of f cycles a sample
// with the power (1 - 2f)^4 / f^2, as pictures behind lenses have them.  weight(place, tap): of the sample tap - 1 further on.
template <class Weight>
double missed_by(Weight weight) {
  constexpr int kPlaces = 128, kWaves = 200;
  double missed = 0, all = 0;
  for (int wave = 1; wave < kWaves; ++wave) {
    const double f = 0.5 * wave / kWaves, power = std::pow(1 - 2 * f, 4) / (f * f);
    for (int place = 0; place < kPlaces; ++place) {
      std::complex<double> got = 0;
      for (int k = 0; k < 4; ++k) {
        got += weight(place, k) * std::polar(1.0, 2 * kPi * f * (k - 1 - static_cast<double>(place) / kPlaces));
      }
      missed += power * std::norm(got - 1.0);
      all += power;
    }
  }
  return missed / all;
}

TEST(SharpnessAccuracy, NoOtherBendMissesLess) {
  const AxisWeights& good = axis_weights(Quality::good, 0);
  ASSERT_EQ(good.phases(), 128);
  const double missed = missed_by([&](int place, int k) { return good.words[4 * place + k] / static_cast<double>(kTapsOne); });
  // The straight line, with a multiple of what the cubic through the four samples adds to it.
  const auto missed_with = [](double bend) {
    return missed_by([=](int place, int k) {
      const double u = place / 128.0, v = 1 - u;
      const double straight[] = {0, v, u, 0},
                   added[] = {-u * v * (1 + v) / 6, u * v * v / 2, u * u * v / 2, -u * v * (1 + u) / 6};
      return straight[k] + bend * added[k];
    });
  };
  for (const double bend : {0.0, 1.0, 1.18, 1.34, 2.0}) EXPECT_LT(missed, missed_with(bend)) << "bend " << bend;
}

// A zone plate: its waves get finer from the middle, up to a pair of pixels a wave.
constexpr int kPlate = 400;
double plate(double x, double y) {
  const double dx = x - kPlate / 2, dy = y - kPlate / 2;
  return 127.5 + 110 * std::cos(kPi * (dx * dx + dy * dy) / kPlate);
}

// Root of the mean square of what is left of the waves where a panorama of 1 / scale the size can't show them, from a quarter
// beyond its limit on, and how much of their contrast those keep that are well within it; both relative to the plate's.
struct Left {
  double moire, contrast;
};

Left reduce(const Plane& plane, Quality quality, int widening, double scale) {
  const AxisWeights& weights = axis_weights(quality, widening);
  double beyond = 0, within = 0;
  int beyond_count = 0, within_count = 0;
  const double margin = 3 * kWidenings[widening] + 2;
  for (double row = margin; row < kPlate - margin; row += scale) {
    std::vector<int32_t> x, y;
    for (double at = margin; at < kPlate - margin; at += scale) {
      x.push_back(static_cast<int32_t>(at * 65536)), y.push_back(static_cast<int32_t>(row * 65536));
    }
    std::vector<uint8_t> out(x.size());
    const int count = static_cast<int>(x.size());
    sample_rows({plane.source(), &weights, &weights, SampleOutput::samples},
                {x.data(), y.data(), count, out.data(), count, count, 1});
    for (std::size_t i = 0; i < x.size(); ++i) {
      const double dx = std::fabs(x[i] / 65536.0 - kPlate / 2), dy = std::fabs(y[i] / 65536.0 - kPlate / 2);
      const double cycles = std::max(dx, dy) / kPlate * scale;  // of the finer axis, a panorama's pixel
      const double wave = out[i] - 127.5;
      if (cycles > 0.625 && dx / kPlate < 0.5) beyond += wave * wave, ++beyond_count;
      if (cycles < 0.15) within += wave * wave, ++within_count;
    }
  }
  const double plate_size = 110 / std::numbers::sqrt2;
  return {std::sqrt(beyond / beyond_count) / plate_size, std::sqrt(within / within_count) / plate_size};
}

TEST(SharpnessAccuracy, ReductionsShowNoMoire) {
  const Plane plane(kPlate, plate);
  for (const Quality quality : {Quality::fast, Quality::good, Quality::best}) {
    for (const double scale : {1.84, 2.0, 2.9, 4.0}) {
      const Left plain = reduce(plane, quality, 0, scale), left = reduce(plane, quality, widening_for(scale), scale);
      std::printf("quality %d, scale %.2f: moire %.3f (plain %.3f), contrast %.3f\n", static_cast<int>(quality), scale,
                  left.moire, plain.moire, left.contrast);
      EXPECT_LE(left.moire, quality == Quality::fast ? 0.15 : 0.1);  // a triangle lets a fifth of the first waves through
      EXPECT_GE(plain.moire, 4 * left.moire);
      EXPECT_GE(left.contrast, quality == Quality::fast ? 0.8 : 0.9);
    }
  }
}

}  // namespace

}  // namespace biseam::test
