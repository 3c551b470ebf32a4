#pragma once

#include "picture/picture.hpp"

namespace biseam::test {

// All of one code.
inline tool::Rgb plain(int width, int height, std::uint8_t code) {
  tool::Rgb picture(width, height);
  picture.bytes.assign(picture.bytes.size(), code);
  return picture;
}

}  // namespace biseam::test
