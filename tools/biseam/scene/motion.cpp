#include "scene/motion.hpp"

#include <numbers>

#include "scene/noise.hpp"

namespace biseam::scene {
namespace {

constexpr int kWaves = 6;
constexpr double kSlowest = 0.25, kOctaves = 3.5;  // hertz; between the slowest wave and the fastest

// Of variance 1, and 0 at the start.  Fast waves are small, as of a hand.
double wander(std::uint64_t seed, int angle, double seconds) {
  double sum = 0, power = 0;
  for (int wave = 0; wave < kWaves; ++wave) {
    const auto random = [&](int draw) { return chance(static_cast<std::int64_t>(seed), 3 * wave + draw, angle); };
    const double frequency = kSlowest * std::exp2(kOctaves * (wave + random(0)) / kWaves), strength = kSlowest / frequency;
    const double start = 2 * std::numbers::pi * random(1);
    sum += strength * (std::sin(2 * std::numbers::pi * frequency * seconds + start) - std::sin(start));
    power += strength * strength;  // half of a wave's own, and as much again of where it starts
  }
  return sum / std::sqrt(power);
}

// The place's axes and the library's: half a turn about the vertical, which undoes itself.
Vec3 operator*(const Matrix3& rotation, Vec3 v) {
  const biseam::Vec3 turned = biseam::operator*(rotation, biseam::Vec3{-v.x, v.y, -v.z});
  return {-turned.x, turned.y, -turned.z};
}

}  // namespace

Turn attitude(const Motion& motion, int frame, double seconds) {
  const auto angle = [&](int index) { return motion.shake > 0 ? motion.shake * wander(motion.seed, index, seconds) : 0.0; };
  return {motion.turn * frame + angle(0), angle(1), angle(2)};
}

View turned(const View& view, const Turn& turn) {
  View other = view;
  other.ray = [ray = view.ray, rotation = rotation(turn)](Position at) -> std::optional<Ray> {
    const std::optional<Ray> own = ray(at);
    if (!own) return std::nullopt;
    return Ray{rotation * own->origin, rotation * own->direction};
  };
  return other;
}

}  // namespace biseam::scene
