// Where the seams of a panorama run, and how far they move.
#pragma once

#include <cstdint>
#include <vector>

#include "base/size.hpp"

namespace biseam::tool {

// Places of the seams, one after the other along them, across them and in columns of the panorama.
using SeamPath = std::vector<double>;

// Mean difference of two paths, columns.
double seam_movement(const SeamPath& from, const SeamPath& to);

// What each pixel of a panorama is made of.
enum class Zone : std::uint8_t { one_lens, lens0_side, lens1_side };  // the latter two: where lenses are joined, by its seam

struct SeamMap {
  Size size;
  std::vector<Zone> zones;  // row by row

  Zone at(int x, int y) const { return zones[std::size_t(y) * std::size_t(size.width) + std::size_t(x)]; }
};

}  // namespace biseam::tool
