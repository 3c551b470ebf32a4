#include "scene/noise.hpp"

#include <numbers>

namespace biseam::scene {

std::uint64_t scrambled(std::uint64_t value) {
  value += 0x9e3779b97f4a7c15u;
  value = (value ^ (value >> 32)) * 0xd6e8feb86659fd93u;
  value = (value ^ (value >> 32)) * 0xd6e8feb86659fd93u;
  return value ^ (value >> 32);
}

static double unit(std::uint64_t bits) { return static_cast<double>(bits >> 11) * 0x1p-53; }

double chance(std::int64_t i, std::int64_t j, std::int64_t k) {
  const auto u = [](std::int64_t n) { return static_cast<std::uint64_t>(n); };
  return unit(scrambled(u(i) * 0x8cb92ba72f3d8dd7u ^ u(j) * 0xaaf98c1eb6a1b4c5u ^ u(k) * 0xc2b2ae3d27d4eb4fu));
}

static double smooth_noise(Vec3 at) {
  const double fx = std::floor(at.x), fy = std::floor(at.y), fz = std::floor(at.z);
  const auto i = static_cast<std::int64_t>(fx), j = static_cast<std::int64_t>(fy), k = static_cast<std::int64_t>(fz);
  const double x = smooth_step(0, 1, at.x - fx), y = smooth_step(0, 1, at.y - fy), z = smooth_step(0, 1, at.z - fz);
  const auto edge = [&](std::int64_t dj, std::int64_t dk) {
    return mix(chance(i, j + dj, k + dk), chance(i + 1, j + dj, k + dk), x);
  };
  return mix(mix(edge(0, 0), edge(1, 0), y), mix(edge(0, 1), edge(1, 1), y), z);
}

double cloudy(Vec3 at, int octaves) {
  double sum = 0, weight = 0, share = 1;
  for (int octave = 0; octave < octaves; ++octave) {
    sum += share * smooth_noise(at);
    weight += share;
    share *= 0.5;
    at = at * 2.03 + Vec3{17.1, 9.2, 4.7};
  }
  return sum / weight;
}

NormalPair normal_pair(std::uint64_t seed, std::uint64_t n) {
  const std::uint64_t start = scrambled(seed) + 2 * n;
  const double radius = std::sqrt(-2 * std::log(1 - unit(scrambled(start))));
  const double angle = 2 * std::numbers::pi * unit(scrambled(start + 1));
  return {radius * std::cos(angle), radius * std::sin(angle)};
}

}  // namespace biseam::scene
