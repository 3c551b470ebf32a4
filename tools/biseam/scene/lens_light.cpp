#include "scene/lens_light.hpp"

#include <algorithm>

#include "camera/trigonometry.hpp"

namespace biseam::scene {
namespace {

constexpr double kMiddleTemperature = 5500;  // kelvin

// Light of a black body at a wavelength in metres, but for a factor that all share.
double black_body(double wavelength, double temperature) {
  constexpr double kSecondRadiation = 0.014388;  // metre kelvin
  return 1 / std::expm1(kSecondRadiation / (wavelength * temperature));
}

// What makes a black body's red, green and blue as strong as they are at the middle temperature; green is left as it is.
Vec3 white_balance(double temperature) {
  constexpr double kRed = 605e-9, kGreen = 540e-9, kBlue = 460e-9;
  const auto lack = [&](double wavelength) {
    return black_body(wavelength, kMiddleTemperature) / black_body(wavelength, temperature);
  };
  return Vec3{lack(kRed), lack(kGreen), lack(kBlue)} * (1 / lack(kGreen));
}

}  // namespace

Vec3 lens_gain(const LightDifference& difference, int lens, int frame, double seconds) {
  const double side = lens == 0 ? 0.5 : -0.5, drifted = std::exp2(side * difference.drift * seconds);
  if (frame < difference.from) return Vec3{1, 1, 1} * drifted;
  const Vec3 balance = white_balance(kMiddleTemperature + side * difference.temperature);
  return balance * (drifted * std::exp2(side * difference.exposure));
}

void shade(Frame& light, const LightDifference& difference, const Fisheye& lens0) {
  const Lens& lens = lens0.lens();
  const double edge = radius(lens, lens.fov / 2 * kDegree);
  const Vec3 veil = Vec3{1, 0.93, 0.8} * difference.flare;
  for_each_row(light.height, [&](int y) {
    for (int x = 0; x < light.width; ++x) {
      const double u = (x - lens.cx) / edge, v = (y - lens.cy) / edge, square = u * u + v * v;
      if (square > 1) continue;
      Vec3& pixel = light.pixels[static_cast<std::size_t>(y) * light.width + x];
      pixel = pixel * (1 - difference.vignette * square) + veil * (0.5 + 0.5 * u);
    }
  });
}

}  // namespace biseam::scene
