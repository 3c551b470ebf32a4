#pragma once

#include <cmath>

#include "picture/picture.hpp"

namespace biseam::test {

// Waves of luma, chroma of one colour: what JPEG keeps well.
inline tool::Nv12 smooth_picture(int width, int height) {
  tool::Nv12 picture(width, height);
  for (std::size_t i = 0; i < picture.luma.size(); ++i) {
    const double x = double(i % std::size_t(width)), y = double(i / std::size_t(width));
    picture.luma[i] = std::uint8_t(128 + 60 * std::sin(x / 17) + 50 * std::cos(y / 11));
  }
  for (std::size_t i = 0; i < picture.chroma.size(); ++i) picture.chroma[i] = std::uint8_t(118 + i % 2 * 20);
  return picture;
}

}  // namespace biseam::test
