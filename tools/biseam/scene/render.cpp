#include "scene/render.hpp"

#include <algorithm>
#include <atomic>
#include <numbers>
#include <thread>

#include "scene/noise.hpp"

namespace biseam::scene {

template <class Work>
static void for_each_row(int rows, const Work& work) {
  std::atomic<int> next{0};
  const auto run = [&] {
    for (int row = next++; row < rows; row = next++) work(row);
  };
  std::vector<std::jthread> helpers;
  for (unsigned n = 1; n < std::max(1u, std::thread::hardware_concurrency()); ++n) helpers.emplace_back(run);
  run();
}

// Display code 0 .. 1 of linear light: straight up to 0.75, then a shoulder that never quite reaches white; sRGB.
static double code_of(double linear) {
  constexpr double knee = 0.75;
  if (linear > knee) linear = 1 - (1 - knee) * std::exp(-(linear - knee) / (1 - knee));
  if (linear <= 0.0031308) return 12.92 * std::max(0.0, linear);
  return 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

// About as the eye sees it; only to tell plain pixels from others.
static double brightness(Vec3 light) { return std::sqrt(0.25 * light.x + 0.65 * light.y + 0.1 * light.z); }

// The mean over one pixel.  Four samples tell whether the pixel is plain; twelve more follow where it is not.
template <class Light>
static Vec3 gather(const Light& light, int x, int y) {
  static constexpr Position kFirst[4] = {{-0.125, -0.375}, {0.375, -0.125}, {-0.375, 0.125}, {0.125, 0.375}};
  const auto sample = [&](double du, double dv) {
    const Vec3 seen = light(Position{x + du, y + dv});
    return Vec3{std::min(seen.x, 4.0), std::min(seen.y, 4.0), std::min(seen.z, 4.0)};
  };
  Vec3 sum;
  double least = 1e30, greatest = 0;
  for (const Position& at : kFirst) {
    const Vec3 seen = sample(at.u, at.v);
    sum = sum + seen;
    const double bright = brightness(seen);
    least = std::min(least, bright), greatest = std::max(greatest, bright);
  }
  if (greatest - least < 0.06) return sum * 0.25;
  for (int n = 0; n < 16; ++n) {
    const int i = n % 4, j = n / 4;
    const bool taken = (j == 0 && i == 1) || (j == 1 && i == 3) || (j == 2 && i == 0) || (j == 3 && i == 2);
    if (!taken) sum = sum + sample((i - 1.5) / 4, (j - 1.5) / 4);
  }
  return sum * (1.0 / 16);
}

Frame render_panorama(const Place& place, const PanoramaView& view) {
  Frame frame{view.width, view.height, std::vector<Vec3>(static_cast<std::size_t>(view.width) * view.height)};
  const double sample_angle = std::numbers::pi / view.height / 2;
  for_each_row(view.height, [&](int y) {
    Vec3* row = &frame.pixels[static_cast<std::size_t>(y) * view.width];
    const auto light = [&](Position at) { return place.light_along({{0, 0, 0}, view.direction(at)}, sample_angle); };
    for (int x = 0; x < view.width; ++x) row[x] = gather(light, x, y);
  });
  return frame;
}

Frame render_fisheye(const Place& place, const Fisheye& lens, double baseline) {
  Frame frame{lens.size, lens.size, std::vector<Vec3>(static_cast<std::size_t>(lens.size) * lens.size)};
  const Vec3 pupil = lens.pupil(baseline);
  const double sample_angle = 1 / lens.pixels_per_radian / 2;
  for_each_row(lens.size, [&](int y) {
    Vec3* row = &frame.pixels[static_cast<std::size_t>(y) * lens.size];
    const auto light = [&](Position at) {
      return lens.sees(at) ? place.light_along({pupil, lens.direction(at)}, sample_angle) : Vec3{};
    };
    for (int x = 0; x < lens.size; ++x) row[x] = gather(light, x, y);
  });
  return frame;
}

std::vector<std::uint8_t> develop(const Frame& frame, const Development& how) {
  std::vector<std::uint8_t> codes(frame.pixels.size() * 3);
  const double gain = std::exp2(how.exposure);
  for_each_row(frame.height, [&](int y) {
    const std::size_t first = static_cast<std::size_t>(y) * frame.width;
    for (std::size_t i = first; i < first + frame.width; ++i) {
      const Vec3 light = frame.pixels[i] * gain;
      double code[3] = {255 * code_of(light.x), 255 * code_of(light.y), 255 * code_of(light.z)};
      if (how.noise > 0) {
        const NormalPair a = normal_pair(how.seed, 2 * i), b = normal_pair(how.seed, 2 * i + 1);
        code[0] += how.noise * a.first, code[1] += how.noise * a.second, code[2] += how.noise * b.first;
      }
      for (int c = 0; c < 3; ++c) codes[i * 3 + c] = static_cast<std::uint8_t>(std::clamp(code[c] + 0.5, 0.0, 255.0));
    }
  });
  return codes;
}

}  // namespace biseam::scene
