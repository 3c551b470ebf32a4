#include "scene/render.hpp"

#include <algorithm>
#include <numbers>

#include "base/share_work.hpp"
#include "base/thread_count.hpp"
#include "scene/noise.hpp"

namespace biseam::scene {

void for_each_row(int rows, const std::function<void(int)>& work) { tool::share_work(rows, tool::processors(), work); }

// Display code 0 .. 1 of linear light: straight up to 0.75, then a shoulder that never quite reaches white; sRGB.
static double code_of(double linear) {
  constexpr double knee = 0.75;
  if (linear > knee) linear = 1 - (1 - knee) * std::exp(-(linear - knee) / (1 - knee));
  if (linear <= 0.0031308) return 12.92 * std::max(0.0, linear);
  return 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

// About as the eye sees it; only to tell plain pixels from others.
static double brightness(Vec3 light) { return std::sqrt(0.25 * light.x + 0.65 * light.y + 0.1 * light.z); }

View view_of(const PanoramaView& panorama) {
  return {panorama.width, panorama.height, std::numbers::pi / panorama.height, [panorama](Position at) {
            return Ray{{0, 0, 0}, panorama.direction(at)};
          }};
}

View view_of(const Fisheye& lens, double baseline) {
  return {lens.lens().width, lens.lens().height, 1 / lens.lens().p, [lens, pupil = lens.pupil(baseline)](Position at) {
            return lens.sees(at) ? std::optional(Ray{pupil, lens.direction(at)}) : std::nullopt;
          }};
}

// Four samples tell whether the pixel is plain; twelve more follow where it is not.
Pixel render_pixel(const Place& place, const View& view, int x, int y) {
  static constexpr Position kFirst[4] = {{-0.125, -0.375}, {0.375, -0.125}, {-0.375, 0.125}, {0.125, 0.375}};
  Pixel pixel;
  const auto sample = [&](double du, double dv) {
    const std::optional<Ray> ray = view.ray({x + du, y + dv});
    const Sight sight = ray ? place.look(*ray, view.pixel_angle / 2) : Sight{};
    if (sight.distance < 1e30) {
      pixel.nearest = std::min(pixel.nearest, sight.distance);
      pixel.farthest = std::max(pixel.farthest, sight.distance);
    }
    pixel.is_mirrored |= sight.is_mirrored;
    return Vec3{std::min(sight.light.x, 4.0), std::min(sight.light.y, 4.0), std::min(sight.light.z, 4.0)};
  };
  Vec3 sum;
  double least = 1e30, greatest = 0;
  for (const Position& at : kFirst) {
    const Vec3 seen = sample(at.u, at.v);
    sum = sum + seen;
    const double bright = brightness(seen);
    least = std::min(least, bright), greatest = std::max(greatest, bright);
  }
  pixel.light = sum * 0.25;
  if (greatest - least < 0.06) return pixel;
  for (int n = 0; n < 16; ++n) {
    const int i = n % 4, j = n / 4;
    const bool taken = (j == 0 && i == 1) || (j == 1 && i == 3) || (j == 2 && i == 0) || (j == 3 && i == 2);
    if (!taken) sum = sum + sample((i - 1.5) / 4, (j - 1.5) / 4);
  }
  pixel.light = sum * (1.0 / 16);
  return pixel;
}

Frame render(const Place& place, const View& view) {
  Frame frame{view.width, view.height, std::vector<Vec3>(static_cast<std::size_t>(view.width) * view.height)};
  for_each_row(view.height, [&](int y) {
    Vec3* row = &frame.pixels[static_cast<std::size_t>(y) * view.width];
    for (int x = 0; x < view.width; ++x) row[x] = render_pixel(place, view, x, y).light;
  });
  return frame;
}

std::vector<std::uint8_t> develop(const Frame& frame, const Development& how) {
  std::vector<std::uint8_t> codes(frame.pixels.size() * 3);
  for_each_row(frame.height, [&](int y) {
    const std::size_t first = static_cast<std::size_t>(y) * frame.width;
    for (std::size_t i = first; i < first + frame.width; ++i) {
      const Vec3 light = frame.pixels[i] * how.gain;
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
