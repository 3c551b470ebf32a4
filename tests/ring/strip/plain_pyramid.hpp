#pragma once

#include <vector>

#include "ring/strip/shape.hpp"

namespace biseam::test {

// Pyramids over strips in double, as sums over all samples: nothing rounded.
struct PlainStrip {
  biseam::ring::StripShape shape;
  std::vector<double> samples;

  double& at(int t, int b) { return samples[static_cast<size_t>(t * shape.width + b)]; }
  // Circular in t, mirrored in b.
  double around(int t, int b) const {
    const int last = shape.width - 1;
    while (b < 0 || b > last) b = b < 0 ? -b : 2 * last - b;
    return samples[static_cast<size_t>(((t % shape.length + shape.length) % shape.length) * shape.width + b)];
  }
};

inline PlainStrip plain_strip(biseam::ring::StripShape shape, const int16_t* samples) {
  return {shape, std::vector<double>(samples, samples + biseam::ring::strip_samples(shape))};
}

inline constexpr double kTaps[5] = {1 / 16.0, 4 / 16.0, 6 / 16.0, 4 / 16.0, 1 / 16.0};

inline PlainStrip plain_reduced(const PlainStrip& fine) {
  PlainStrip coarse{biseam::ring::reduced(fine.shape), {}};
  coarse.samples.resize(static_cast<size_t>(biseam::ring::strip_samples(coarse.shape)));
  for (int t = 0; t < coarse.shape.length; ++t) {
    for (int b = 0; b < coarse.shape.width; ++b) {
      for (int j = -2; j <= 2; ++j) {
        for (int i = -2; i <= 2; ++i) coarse.at(t, b) += kTaps[j + 2] * kTaps[i + 2] * fine.around(2 * t + j, 2 * b + i);
      }
    }
  }
  return coarse;
}

// The same weights on a grid where every second sample is empty, times 4.  The mirror is that of the fine grid.
inline PlainStrip plain_expanded(const PlainStrip& coarse, biseam::ring::StripShape shape) {
  PlainStrip sparse{shape, std::vector<double>(static_cast<size_t>(biseam::ring::strip_samples(shape)))};
  for (int t = 0; t < coarse.shape.length; ++t) {
    for (int b = 0; 2 * b < shape.width; ++b)
      sparse.at(2 * t, 2 * b) = coarse.samples[static_cast<size_t>(t * coarse.shape.width + b)];
  }
  PlainStrip fine{shape, std::vector<double>(sparse.samples.size())};
  for (int t = 0; t < shape.length; ++t) {
    for (int b = 0; b < shape.width; ++b) {
      for (int j = -2; j <= 2; ++j) {
        for (int i = -2; i <= 2; ++i) fine.at(t, b) += 4 * kTaps[j + 2] * kTaps[i + 2] * sparse.around(t + j, b + i);
      }
    }
  }
  return fine;
}

}  // namespace biseam::test
