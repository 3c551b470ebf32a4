#include "ring/lit_scene.hpp"

#include <algorithm>
#include <cmath>
#include <random>

namespace biseam::test {
double recorded_by_bt709(double light) { return light < 0.018 ? 4.5 * light : 1.099 * std::pow(light, 0.45) - 0.099; }

Rgb lens_light(const LensLight& lens, Rgb light, double angle, double t) {
  const double across = kPi / 2 - angle;  // of lens 1
  if (across >= lens.patch.low && across < lens.patch.high && std::abs(t) < lens.patch.around) light.fill(lens.patch.light);
  const double rim = angle / (100 * kDegree), falloff = 1 - lens.vignette * rim * rim, exposure = std::exp2(lens.exposure);
  const double apart = std::remainder(t - lens.flare_at, 2 * kPi);
  const double flare = lens.flare == 0 ? 0 : lens.flare * std::exp(-apart * apart * 3);
  for (std::size_t c = 0; c < 3; ++c) light[c] = light[c] * exposure * lens.balance[c] * falloff + flare;
  return light;
}

Rgb meadow(const Vec3& d) {
  const double a = std::sin(3 * d.x + 1.3 * d.y), b = std::sin(2.3 * d.z - 1.7 * d.y + 1), c = std::cos(2 * d.y + d.x - d.z);
  return {0.16 + 0.09 * a + 0.04 * b, 0.17 + 0.08 * b + 0.04 * c, 0.15 + 0.06 * c - 0.05 * a};
}

Rgb gravel(const Vec3& d) {
  const double grain = std::sin(40 * d.x + 13 * d.y) * std::sin(37 * d.y - 11 * d.z) * std::sin(43 * d.z + 17 * d.x);
  Rgb light = meadow(d);
  for (double& l : light) l *= 1 + 0.6 * grain;
  return light;
}

std::array<double, 3> bt709_codes(const Rgb& light) {
  std::array<double, 3> recorded{};
  for (std::size_t c = 0; c < 3; ++c) recorded[c] = std::clamp(recorded_by_bt709(std::max(0.0, light[c])), 0.0, 1.0);
  const auto [red, green, blue] = recorded;
  const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
  return {16 + 219 * luma, 128 + 224 * (blue - luma) / 1.8556, 128 + 224 * (red - luma) / 1.5748};
}

Film::Film(const ring::EngineConfig& config) : config_(config) {
  const TestFormat& format = test_format(config.format);
  for (int lens = 0; lens < 2; ++lens) {
    const Projector projector(config.camera, lens);
    for (int channel = 0; channel < (format.channels() > 1 ? 2 : 1); ++channel) {
      const ReferencePlane grid = grid_of(format, channel, BISEAM_SITING_LEFT);
      const int columns = config.camera.lens[lens].width / grid.sub_x, rows = config.camera.lens[lens].height / grid.sub_y;
      for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
          const Vec3 d = projector.unproject(grid.sub_x * x + grid.offset_x, grid.sub_y * y + grid.offset_y);
          const double angle = std::acos(std::clamp(lens == 1 ? d.z : -d.z, -1.0, 1.0));
          seen_[lens][channel].push_back({d, angle, std::atan2(d.y, d.x)});
        }
      }
      columns_[lens][channel] = columns;
    }
  }
}

Film::Exposed Film::expose(const LitScene& scene) const {
  Exposed exposed;
  for (int lens = 0; lens < 2; ++lens) {
    if (scene.covered[lens]) continue;
    for (int grid = 0; grid < 2; ++grid) {
      for (const Seen& seen : seen_[lens][grid]) {
        const auto codes = bt709_codes(lens_light(scene.lens[lens], scene.light(seen.direction), seen.angle, seen.round));
        if (grid == 0) exposed.codes[lens][0].push_back(codes[0]);
        for (std::size_t channel = 1; grid == 1 && channel < 3; ++channel)
          exposed.codes[lens][channel].push_back(codes[channel]);
      }
    }
  }
  return exposed;
}

Fisheyes Film::develop(const Exposed& exposed, double noise, std::uint32_t seed) const {
  const TestFormat& format = test_format(config_.format);
  std::mt19937 random(seed);
  return Fisheyes(config_, [&](int lens, int channel, int x, int y) {
    const std::vector<double>& codes = exposed.codes[lens][channel];
    if (codes.empty()) return (channel == 0 ? 16 : 128) << (format.bits - 8);
    double code = codes[static_cast<std::size_t>(y * columns_[lens][channel == 0 ? 0 : 1] + x)];
    if (noise > 0) {
      double sum = -2;  // of four, whose variances add up to a third
      for (int i = 0; i < 4; ++i) sum += 0x1p-32 * static_cast<double>(random());
      code += noise * std::sqrt(3.0) * sum;
    }
    return std::clamp(static_cast<int>(std::lround(std::ldexp(code, format.bits - 8))), 0, format.highest());
  });
}

Fisheyes Film::of(const LitScene& scene) const { return develop(expose(scene), scene.noise, scene.seed); }

}  // namespace biseam::test
