#pragma once

#include <algorithm>
#include <cmath>

#include "biseam/biseam.h"
#include "stages/blend/blend_fixture.hpp"
#include "support/blend_formulas.hpp"

// A band of two sources as the definition has it, from the sources to what is composed.
namespace biseam::test {

// Source 1 with its mirror on the right, source 2 with its mirror on the left.
inline TestImage widened(const TestImage& source, int t, bool first) {
  TestImage band(source.width() + t, source.height());
  const int covered = source.width();
  for (int y = 0; y < band.height(); ++y) {
    for (int x = 0; x < band.width(); ++x) {
      const int c = first ? (x < covered ? x : 2 * covered - 1 - x) : (x < t ? t - 1 - x : x - t);
      for (int k = 0; k < 3; ++k) band.at(x, y, k) = source.at(c, y, k);
    }
  }
  return band;
}

inline TestImage left_half_mask(int width, int height) {
  TestImage mask(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width / 2; ++x) {
      for (int k = 0; k < 3; ++k) mask.at(x, y, k) = 64;
    }
  }
  return mask;
}

inline int picked(int position, int src_size, int dst_size) {
  const float scale = static_cast<float>(src_size) / static_cast<float>(dst_size);
  const float mapped = static_cast<float>((position + 0.5) * static_cast<double>(scale) - 0.5);
  return std::min(std::max(static_cast<int>(std::floor(mapped)), 0), src_size - 1);
}

inline TestImage resized(const TestImage& src, int width, int height) {
  TestImage dst(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < 3; ++k) dst.at(x, y, k) = src.at(picked(x, src.width(), width), picked(y, src.height(), height), k);
    }
  }
  return dst;
}

struct Sources {
  Sources(RandomSource& random, const BlendConfig& config)
      : first(config.band_width, config.in_h), second(config.band_width, config.in_h) {
    first.randomize(random, 0, 255);
    second.randomize(random, 0, 255);
  }
  TestImage first, second;
};

inline TestImage composed(const Sources& sources, const BlendConfig& config, const TestImage& mask) {
  return blended(widened(sources.first, config.trans_width, true), widened(sources.second, config.trans_width, false), mask,
                 config.pyr_level);
}

}  // namespace biseam::test
