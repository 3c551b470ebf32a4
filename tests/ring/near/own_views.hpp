// Strips of two lenses that see one texture apart, by a disparity that is known everywhere.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

#include "ring/near/disparity.hpp"
#include "support/random_source.hpp"

namespace biseam::test {

using namespace biseam::ring;

// Smooth noise with grains of about three samples, in [-1, 1].
class Texture {
 public:
  Texture(RandomSource& random, StripShape shape) : shape_(shape) {
    for (int i = 0; i < columns() * rows(); ++i) grains_.push_back(random.real_between(-1, 1));
  }
  double at(int t, double b) const {
    const double u = t / 3.0, v = b / 3 + 8;
    const double i = std::floor(u), j = std::floor(v);
    const auto grain = [&](double row, double column) {
      return grains_[static_cast<std::size_t>((static_cast<int>(row) % rows()) * columns() + static_cast<int>(column))];
    };
    const auto ease = [](double x) { return x * x * (3 - 2 * x); };
    const double p = ease(u - i), q = ease(v - j);
    return (grain(i, j) * (1 - q) + grain(i, j + 1) * q) * (1 - p) + (grain(i + 1, j) * (1 - q) + grain(i + 1, j + 1) * q) * p;
  }

 private:
  int rows() const { return shape_.length / 3; }
  int columns() const { return shape_.width / 3 + 20; }
  StripShape shape_;
  std::vector<double> grains_;
};

struct OwnViews {
  StripShape shape;
  std::vector<int16_t> luma[2];

  struct Recording {
    double contrast = 40, gain1 = 1, noise = 0;  // codes of 8 bits, and lens 1's factor
    bool covered = false;                        // lens 1
  };
  // disparity: strip samples, of a row.
  OwnViews(RandomSource& random, StripShape size, const std::function<double(int)>& disparity, const Recording& how)
      : shape(size) {
    const Texture texture(random, size);
    for (int lens = 0; lens < 2; ++lens) {
      for (int t = 0; t < shape.length; ++t) {
        for (int b = 0; b < shape.width; ++b) {
          const double seen = texture.at(t, b + (lens == 0 ? -0.5 : 0.5) * disparity(t));
          double code = (110 + how.contrast * seen) * (lens == 1 ? how.gain1 : 1);
          if (lens == 1 && how.covered) code = 16;
          code += how.noise * (random.real_between(-1, 1) + random.real_between(-1, 1));
          luma[lens].push_back(static_cast<int16_t>(std::lround(64 * std::clamp(code, 0.0, 255.0))));
        }
      }
    }
  }
};

// In samples of the search.
inline std::vector<double> disparities_of(const OwnViews& views) {
  const NearShape shape = near_shape(views.shape);
  const auto search = std::make_unique<DisparitySearch>();
  std::vector<int16_t> found(static_cast<std::size_t>(shape.length));
  for (int part = 0; part < search_parts(shape); ++part) {
    measure_disparities(shape, {views.luma[0].data(), views.luma[1].data()}, part, *search);
  }
  find_disparities(shape, *search, found.data());
  std::vector<double> disparities;
  for (const int16_t disparity : found) disparities.push_back(disparity / double{kDisparityOne});
  return disparities;
}

}  // namespace biseam::test
