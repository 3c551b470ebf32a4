#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "driver/setup.hpp"

namespace biseam::bench {

// Luma, then interleaved Cb, Cr of half the size both ways; rows without padding.
struct Nv12 {
  Nv12(int width, int height);
  int width, height;
  std::vector<uint8_t> luma, chroma;
};

// The picture of one lens; ends the program when the file can't be read.
Nv12 read_fisheye(const Setup& setup, int lens);

void save(const Nv12& picture, const std::string& file);

}  // namespace biseam::bench
