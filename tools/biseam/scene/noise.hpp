// Repeatable randomness: the same numbers for the same arguments on every machine and in any order.
#pragma once

#include <cstdint>

#include "scene/vector.hpp"

namespace biseam::scene {

// Well mixed 64 bits of its argument.
std::uint64_t scrambled(std::uint64_t value);

// Uniform in [0, 1), for a cell of a grid.
double chance(std::int64_t i, std::int64_t j, std::int64_t k = 0);

// Smooth noise in [0, 1] whose grains have size 1, summed over the given number of octaves.
double cloudy(Vec3 at, int octaves);

// Two independent normal numbers of standard deviation 1 for the n-th draw of a seed.
struct NormalPair {
  double first, second;
};
NormalPair normal_pair(std::uint64_t seed, std::uint64_t n);

}  // namespace biseam::scene
