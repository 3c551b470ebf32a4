#include "analytic/scene.hpp"

#include <cmath>
#include <numbers>
#include <random>

namespace biseam::bench {

namespace {

constexpr double kMostCycles = 0.3;  // a pixel
// Contrast with which plain bilinear sampling is some 46 dB from the truth.
constexpr double kLumaRms = 17.5, kChromaRms = 0.6 * kLumaRms;  // of all waves together, code values
constexpr int kLumaWaves = 60, kChromaWaves = 20, kEdges = 6;
constexpr double kEdgeHeight = 8;  // half of the step
constexpr double kEdgePixels = 2;  // from the middle of an edge to three quarters of its height

// The engine's numbers are the same everywhere, those of the library's distributions are not.
class Numbers {
 public:
  double between(double low, double high) { return low + (high - low) * (static_cast<double>(engine_()) / 4294967296.0); }

  Vec3 direction() {
    const double z = between(-1, 1), turn = between(0, 2 * std::numbers::pi), across = std::sqrt(1 - z * z);
    return {across * std::cos(turn), across * std::sin(turn), z};
  }

 private:
  std::mt19937 engine_{20261122};
};

double dot(const Vec3& a, const Vec3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

}  // namespace

Scene::Scene(double pixels_per_radian) {
  Numbers numbers;
  const auto add_waves = [&](std::vector<Wave>& waves, int count, double rms, double most) {
    for (int i = 0; i < count; ++i) {
      const Vec3 along = numbers.direction();
      const double cycles = numbers.between(0.02, 1) * most * pixels_per_radian;
      waves.push_back({{along.x * cycles, along.y * cycles, along.z * cycles},
                       numbers.between(0, 2 * std::numbers::pi),
                       rms * std::sqrt(2.0 / count)});
    }
  };
  add_waves(luma_, kLumaWaves, kLumaRms, kMostCycles);
  add_waves(cb_, kChromaWaves, kChromaRms, kMostCycles / 2);
  add_waves(cr_, kChromaWaves, kChromaRms, kMostCycles / 2);
  for (int i = 0; i < kEdges; ++i) {
    edges_.push_back({numbers.direction(), numbers.between(-0.8, 0.8), pixels_per_radian / kEdgePixels,
                      i % 2 == 0 ? kEdgeHeight : -kEdgeHeight});
  }
}

double Scene::sum(const std::vector<Wave>& waves, const Vec3& direction) {
  double total = 0;
  for (const Wave& wave : waves) {
    total += wave.amplitude * std::cos(2 * std::numbers::pi * dot(wave.cycles, direction) + wave.phase);
  }
  return total;
}

double Scene::luma(const Vec3& direction) const {
  double total = 126 + sum(luma_, direction);
  for (const Edge& edge : edges_) {
    total += edge.height * std::tanh(0.5 * edge.steepness * (dot(edge.normal, direction) - edge.distance));
  }
  return total;
}

}  // namespace biseam::bench
