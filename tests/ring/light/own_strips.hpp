#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "ring/light/measure.hpp"
#include "ring/lit_scene.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

using namespace biseam::ring;

// Strips of a scene by ring coordinates, seen by two lenses, without pictures between.
struct OwnStrips {
  StripShape shape;
  std::vector<int16_t> planes[2][3];
  Tone tone = make_tone(Transfer::bt709, false, false);

  OwnStrips(StripShape size, const LitScene& scene) : shape(size) {
    RandomSource random;
    for (int lens = 0; lens < 2; ++lens) {
      for (int t = 0; t < shape.length; ++t) {
        for (int b = 0; b < shape.width; ++b) {
          const double round = 2 * kPi * t / shape.length, across = (b - 0.5 * (shape.width - 1)) * 2 * kPi / shape.length;
          const Vec3 d = {std::cos(across) * std::cos(round), std::cos(across) * std::sin(round), std::sin(across)};
          const double angle = kPi / 2 + (lens == 0 ? across : -across);
          const auto codes = bt709_codes(lens_light(scene.lens[lens], scene.light(d), angle, round));
          for (std::size_t c = 0; c < 3; ++c) {
            const double noise = scene.noise * static_cast<double>(random.real_between(-1.7f, 1.7f));
            const double code = scene.covered[lens] ? (c == 0 ? 16 : 128) : codes[c] + noise;
            planes[lens][c].push_back(static_cast<int16_t>(std::lround(std::clamp(code, 0.0, 255.0) * 64)));
          }
        }
      }
    }
  }

  LightFrame measure() const {
    LogTable logs;
    fill_logs(tone, logs);
    StripPair pair{shape, {}};
    for (int lens = 0; lens < 2; ++lens) {
      for (std::size_t c = 0; c < 3; ++c) pair.planes[lens][c] = planes[lens][c].data();
    }
    LightFrame frame;
    for (int s = 0; s < kSectors; ++s) frame.sectors[s] = measure_sector(pair, tone, logs, s);
    return frame;
  }
};

}  // namespace biseam::test
