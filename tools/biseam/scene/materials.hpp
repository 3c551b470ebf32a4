// What the surfaces of the virtual place look like before the light falls on them.
#pragma once

#include <vector>

#include "scene/vector.hpp"
#include "text/lettering.hpp"

namespace biseam::scene {

enum class Material {
  floor,
  brick,
  stone,
  fluted_stone,
  plaster,
  roof_tiles,
  wood,
  door,
  leaves,
  earth,
  lacquer,
  steel,
  iron,
  board,
  chart
};

// A painted sign: lines of lettering, centred, within a rim.
struct Board {
  std::vector<tool::Lettering> lines;
  double width, height;  // metres
  double line_height;    // of a capital letter, metres
  Vec3 ground, ink;
};

struct Finish {
  Material material;
  Vec3 tint{1, 1, 1};
  const Board* board = nullptr;  // of Material::board
};

// The point of a surface that is to be painted.  On upright faces u runs to the right as seen from outside and v up; on
// level faces u runs along x and v along z.  Metres; u and v of boards and charts count from the middle of the face.
struct Spot {
  Vec3 position, normal;
  double u, v;
  double extent_u, extent_v;  // how much of the surface one sample covers
};

struct Surface {
  Vec3 albedo;
  Vec3 normal;
  double gloss = 0;   // strength of the sun's highlight
  double mirror = 0;  // share of the light that is reflected as by a mirror
};

Surface painted(const Finish& finish, const Spot& spot);

}  // namespace biseam::scene
