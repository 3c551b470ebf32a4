#pragma once

#include <cstdint>
#include <vector>

#include "support/pyramid_formulas.hpp"
#include "support/test_image.hpp"

// The pyramid blend by its definition, built on the direct sums.
namespace biseam::test {

struct TestPyramid {
  std::vector<TestImage> levels;
  TestImage top{0, 0};
};

inline int half_up(int size) { return (size + 1) / 2; }

// Even sizes of two pixels are not reduced: what was there, zero, stays.  The same goes for doubles of one pixel.
inline TestImage next_level(const TestImage& level) {
  const int width = half_up(level.width()), height = half_up(level.height());
  const bool half = level.width() % 2 == 0 && level.height() % 2 == 0;
  if (half && (level.width() == 2 || level.height() == 2)) return TestImage(width, height);
  return reduced(level, width, height);
}

inline TestImage level_before(const TestImage& level, int width, int height) {
  const bool is_double = width == 2 * level.width() && height == 2 * level.height();
  if (is_double && (level.width() == 1 || level.height() == 1)) return TestImage(width, height);
  return expanded(level, width, height);
}

inline TestPyramid gaussian_of(const TestImage& image, int level_count) {
  TestPyramid pyramid;
  TestImage level = image;
  for (int k = 0; k < level_count; ++k) {
    pyramid.levels.push_back(level);
    level = next_level(level);
  }
  pyramid.top = level;
  return pyramid;
}

inline TestPyramid laplacian_of(const TestImage& image, int level_count) {
  TestPyramid pyramid = gaussian_of(image, level_count);
  for (int k = 0; k < level_count; ++k) {
    TestImage& level = pyramid.levels[k];
    const TestImage& next = k + 1 < level_count ? pyramid.levels[k + 1] : pyramid.top;
    // The next level is still Gaussian here: levels turn Laplacian from the first on.
    const TestImage up = level_before(next, level.width(), level.height());
    for (size_t i = 0; i < level.samples().size(); ++i) level.samples()[i] -= up.samples()[i];
  }
  return pyramid;
}

inline TestImage mixed(const TestImage& a, const TestImage& b, const TestImage& mask) {
  TestImage out = a;
  for (size_t i = 0; i < out.samples().size(); ++i) {
    const int32_t weight = mask.samples()[i];
    out.samples()[i] = a.samples()[i] * weight + b.samples()[i] * (64 - weight);
  }
  return out;
}

inline TestImage collapsed(const TestPyramid& pyramid) {
  TestImage image = pyramid.top;
  for (size_t k = pyramid.levels.size(); k-- > 0;) {
    const TestImage& level = pyramid.levels[k];
    image = level_before(image, level.width(), level.height());
    for (size_t i = 0; i < image.samples().size(); ++i) image.samples()[i] += level.samples()[i];
  }
  return image;
}

// Two bands of the mask's size under the mask, scaled by 64.
inline TestImage blended(const TestImage& band1, const TestImage& band2, const TestImage& mask, int level_count) {
  const TestPyramid a = laplacian_of(band1, level_count), b = laplacian_of(band2, level_count);
  const TestPyramid m = gaussian_of(mask, level_count);
  TestPyramid out;
  for (int k = 0; k < level_count; ++k) out.levels.push_back(mixed(a.levels[k], b.levels[k], m.levels[k]));
  out.top = mixed(a.top, b.top, m.top);
  return collapsed(out);
}

}  // namespace biseam::test
