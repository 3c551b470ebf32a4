// A world of colours in linear light, as lenses of different exposure, white balance and falloff record it, with noise: the
// truth of everything that matching lenses is to find.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "camera/projector.hpp"
#include "ring/engine_fixture.hpp"

namespace biseam::test {

using Rgb = std::array<double, 3>;  // linear light, 0 .. 1

// Grey light of a lens's own: across the ring from low to high (towards lens 1), round it within a half of t = 0; radians.
struct Patch {
  double low = 0, high = 0, around = 0, light = 0;
};

// What one lens does to the light.
struct LensLight {
  double exposure = 0;  // EV
  Rgb balance = {1, 1, 1};
  double vignette = 0;             // share lost at 100 degrees from the axis
  double flare = 0, flare_at = 0;  // share of white added round this angle of the ring, radians
  Patch patch;
};

// 500 K between 5500 and 5000 K, as ratios of linear light.
inline constexpr Rgb kWarmer = {1.045, 1, 0.93};

struct LitScene {
  std::function<Rgb(const Vec3&)> light;
  LensLight lens[2];
  double noise = 0;  // codes of 8 bits, standard deviation
  std::uint32_t seed = 1;
  bool covered[2] = {false, false};
};

// Smooth hills of light in all directions, from dark to bright.
Rgb meadow(const Vec3& direction);

// The same with sharp texture on it.
Rgb gravel(const Vec3& direction);

double recorded_by_bt709(double light);

// Light that falls into a lens at an angle (radians) from its axis, round the ring at t.
Rgb lens_light(const LensLight& lens, Rgb light, double angle, double t);

// Codes of limited range in fractions of 8-bit codes; black and white are held.
std::array<double, 3> bt709_codes(const Rgb& light);

// What a camera's samples see, found once for all frames.
class Film {
 public:
  explicit Film(const ring::EngineConfig& config);
  Fisheyes of(const LitScene& scene) const;

  // The same in two steps, for scenes in which nothing moves: what is seen, and noise on it.
  struct Exposed {
    std::vector<double> codes[2][3];  // by lens and channel, of 8 bits; none of a covered lens
  };
  Exposed expose(const LitScene& scene) const;
  Fisheyes develop(const Exposed& exposed, double noise, std::uint32_t seed) const;

 private:
  struct Seen {
    Vec3 direction;
    double angle, round;  // from the lens's axis, round the ring
  };
  ring::EngineConfig config_;
  std::vector<Seen> seen_[2][2];
  int columns_[2][2] = {};
};

}  // namespace biseam::test
