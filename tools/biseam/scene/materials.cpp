#include "scene/materials.hpp"

#include <algorithm>
#include <numbers>

#include "scene/noise.hpp"

namespace biseam::scene {

using std::numbers::pi;

// Share of [x - extent/2, x + extent/2] that lies in the stripes [n * period, n * period + breadth).
static double stripes(double x, double extent, double period, double breadth) {
  extent = std::max(extent, 1e-4);
  const auto before = [&](double at) {
    const double count = std::floor(at / period);
    return count * breadth + std::min(at - count * period, breadth);
  };
  return std::clamp((before(x + extent / 2) - before(x - extent / 2)) / extent, 0.0, 1.0);
}

static double either(double a, double b) { return a + b - a * b; }

static double speckle(Vec3 at, double grain) { return cloudy(at * (1 / grain), 3); }

constexpr double kRosette = 1.75;

// An eight-pointed star in a ring under the camera: 0 the ground, 1 light inlay, 2 dark inlay.
static int rosette(double radius, double angle) {
  if (radius > 1.66) return 2;
  if (radius > 1.58) return 1;
  if (radius > 1.45 && radius < 1.5) return 2;
  if (radius < 0.2) return radius < 0.14 ? 1 : 2;
  const double sector = pi / 4, turn = std::floor(angle / sector + 0.5);
  angle -= turn * sector;
  const double tip = (static_cast<int>(turn) & 1) == 0 ? 1.4 : 0.95, half = 0.34;
  const double along = radius * std::cos(angle), across = std::abs(radius * std::sin(angle));
  if (across >= half * (1 - along / tip)) return 0;
  return angle > 0 ? 2 : 1;
}

// Small cut stones laid in rings; their breadth doubles where a ring would hold too many.
static Surface mosaic(const Spot& spot) {
  const double ring = 0.036, joint = 0.005;
  // Stones have a breadth in the very middle too.
  const double radius = std::max(1e-9, std::sqrt(spot.u * spot.u + spot.v * spot.v)), angle = std::atan2(spot.u, spot.v);
  const double n = std::floor(radius / ring), stones = std::max(8.0, 8 * std::exp2(std::floor(std::log2(n + 0.5))));
  const double along = (angle + pi) * radius, breadth = 2 * pi * radius / stones;
  const double extent = std::max(spot.extent_u, spot.extent_v);
  const double gap = either(stripes(radius, extent, ring, joint), stripes(along + joint / 2, extent, breadth, joint));
  const Vec3 colours[3] = {{0.44, 0.22, 0.13}, {0.66, 0.60, 0.49}, {0.10, 0.15, 0.21}};
  const auto i = static_cast<long>(n), j = static_cast<long>(std::floor(along / breadth));
  const Vec3 colour = colours[rosette(radius, angle + pi / 8)] * (0.72 + 0.5 * chance(i, j, 11));
  return {mix(colour, Vec3{0.33, 0.29, 0.24}, gap), spot.normal};
}

static Surface floor_slabs(const Spot& spot) {
  if (spot.u * spot.u + spot.v * spot.v < kRosette * kRosette) return mosaic(spot);
  const double slab = 0.6, joint_breadth = 0.014;
  const double u = spot.u + slab / 2, v = spot.v + slab / 2;
  const auto i = static_cast<long>(std::floor(u / slab)), j = static_cast<long>(std::floor(v / slab));
  const double shade = 0.78 + 0.24 * chance(i, j) + 0.3 * (speckle(spot.position, 0.13) - 0.5);
  const double from_middle = std::max(std::abs(spot.u), std::abs(spot.v));
  Vec3 colour = ((i + j) & 1) != 0 ? Vec3{0.33, 0.27, 0.21} : Vec3{0.46, 0.40, 0.32};
  if (from_middle > 4.2 && from_middle < 4.8) colour = {0.26, 0.14, 0.10};
  const double joint = either(stripes(u + joint_breadth / 2, spot.extent_u, slab, joint_breadth),
                              stripes(v + joint_breadth / 2, spot.extent_v, slab, joint_breadth));
  return {mix(colour * shade, Vec3{0.11, 0.09, 0.08}, 0.85 * joint), spot.normal};
}

static Surface bricks(const Spot& spot) {
  const double length = 0.26, height = 0.085, mortar = 0.011;
  const double row = std::floor(spot.v / height);
  const double u = spot.u + (static_cast<long>(row) & 1) * length / 2;
  const auto i = static_cast<long>(std::floor(u / length)), j = static_cast<long>(row);
  const double joint = either(stripes(u, spot.extent_u, length, mortar), stripes(spot.v, spot.extent_v, height, mortar));
  const double tone = chance(i, j, 7), shade = 0.72 + 0.42 * chance(i, j) + 0.35 * (speckle(spot.position, 0.06) - 0.5);
  const double stain = 0.8 + 0.3 * cloudy(spot.position * 0.9, 2);
  const Vec3 brick = mix(Vec3{0.44, 0.17, 0.10}, Vec3{0.52, 0.29, 0.18}, tone) * shade;
  return {mix(brick, Vec3{0.56, 0.51, 0.45}, joint) * stain, spot.normal};
}

static Surface stone(const Spot& spot, Vec3 tint) {
  const double shade = 0.9 + 0.35 * (speckle(spot.position, 0.12) - 0.5) + 0.2 * (cloudy(spot.position * 1.5, 2) - 0.5);
  return {Vec3{0.66, 0.61, 0.53} * tint * shade, spot.normal};
}

// Twenty flutes around an upright shaft.
static Surface fluted(const Spot& spot, Vec3 tint) {
  Surface surface = stone(spot, tint);
  const double angle = std::atan2(spot.normal.x, spot.normal.z), phase = angle * 20;
  const double bend = 0.55 * std::sin(phase);
  const Vec3 aside{spot.normal.z, 0, -spot.normal.x};
  surface.normal = normalised(spot.normal + aside * bend);
  surface.albedo = surface.albedo * (0.86 + 0.14 * std::cos(phase));
  return surface;
}

// A plastered front with rows of shuttered windows.
static Surface plaster(const Spot& spot, Vec3 tint) {
  const double across = 1.9, storey = 2.3;
  const double column = std::floor(spot.u / across), floor = std::floor(spot.v / storey);
  const double u = spot.u - (column + 0.5) * across, v = spot.v - floor * storey;
  const double shade = 0.85 + 0.3 * cloudy(spot.position * 0.7, 3);
  const Vec3 wall = tint * shade;
  if (spot.normal.y != 0) return {wall, spot.normal};
  if (v < 0.12) return {Vec3{0.68, 0.63, 0.55} * shade, spot.normal};
  const double from_middle = std::abs(u);
  if (v < 0.5 || v > 2.0 || from_middle > 0.86) return {wall, spot.normal};
  if (v > 0.62 && v < 1.9 && from_middle < 0.4) {
    const bool bar = from_middle < 0.035 || std::abs(v - 1.45) < 0.03;
    return {bar ? Vec3{0.75, 0.72, 0.66} : Vec3{0.09, 0.12, 0.15}, spot.normal, 0.2, bar ? 0.0 : 0.25};
  }
  if (v > 0.6 && v < 1.92 && from_middle > 0.44 && from_middle < 0.82) {
    const double slat = stripes(spot.v, spot.extent_v, 0.09, 0.03);
    return {mix(Vec3{0.13, 0.27, 0.22}, Vec3{0.05, 0.11, 0.09}, slat), spot.normal};
  }
  return {from_middle < 0.44 ? Vec3{0.70, 0.66, 0.58} : wall, spot.normal};
}

static Surface roof_tiles(const Spot& spot) {
  const double ridge = stripes(spot.u, spot.extent_u, 0.24, 0.08), row = stripes(spot.v, spot.extent_v, 0.33, 0.05);
  const auto i = static_cast<long>(std::floor(spot.u / 0.24)), j = static_cast<long>(std::floor(spot.v / 0.33));
  const Vec3 tile = Vec3{0.50, 0.23, 0.13} * (0.75 + 0.4 * chance(i, j, 3));
  return {tile * (1 - 0.45 * either(ridge, row)), spot.normal};
}

static Surface planks(const Spot& spot, Vec3 tint, double breadth) {
  const auto board = static_cast<long>(std::floor(spot.v / breadth));
  const double gap = stripes(spot.v + 0.004, spot.extent_v, breadth, 0.008);
  const double grain = cloudy({spot.u * 3 + 31.7 * chance(board, 5), spot.v * 60, 0.5}, 3);
  const Vec3 wood = mix(Vec3{0.42, 0.26, 0.13}, Vec3{0.58, 0.39, 0.21}, grain) * (0.8 + 0.35 * chance(board, 9));
  return {wood * tint * (1 - 0.75 * gap), spot.normal};
}

static Surface leaves(const Spot& spot, Vec3 tint) {
  const Vec3 at = spot.position * 16;
  const double fine = cloudy(at, 3);
  const Vec3 bend{cloudy(at + Vec3{3, 0, 0}, 2) - 0.5, cloudy(at + Vec3{0, 5, 0}, 2) - 0.5,
                  cloudy(at + Vec3{0, 0, 7}, 2) - 0.5};
  const Vec3 green = mix(Vec3{0.04, 0.10, 0.03}, Vec3{0.24, 0.36, 0.10}, smooth_step(0.25, 0.8, fine));
  return {green * tint, normalised(spot.normal + bend * 2.2)};
}

static Surface lettered(const Board& board, const Spot& spot) {
  const double pitch = board.line_height * 1.7, count = static_cast<double>(board.lines.size());
  const double extent = std::max(spot.extent_u, spot.extent_v);
  double ink = 0;
  for (std::size_t n = 0; n < board.lines.size(); ++n) {
    const double top = ((count - 1) / 2 - static_cast<double>(n)) * pitch + board.line_height / 2;
    const double x = spot.u / board.line_height + board.lines[n].width() / 2, y = (top - spot.v) / board.line_height;
    ink = std::max(ink, board.lines[n].ink(x, y, extent / board.line_height));
  }
  const double inset = std::min(board.width / 2 - std::abs(spot.u), board.height / 2 - std::abs(spot.v));
  const double rim = board.line_height * 0.22, line = board.line_height * 0.09;
  if (inset > rim && inset < rim + line) ink = 1;
  return {mix(board.ground, board.ink, ink), spot.normal, 0.25, 0};
}

// A sharpness chart: a star of 36 rays in a ring of check squares.
static Surface test_chart(const Spot& spot) {
  const double radius = std::sqrt(spot.u * spot.u + spot.v * spot.v), angle = std::atan2(spot.u, spot.v);
  const Vec3 white{0.78, 0.78, 0.76}, black{0.04, 0.04, 0.045};
  bool dark;
  if (radius < 0.045) {
    dark = radius > 0.025;
  } else if (radius < 0.44) {
    dark = std::sin(36 * angle) > 0;
  } else if (radius < 0.47) {
    dark = true;
  } else {
    dark = ((static_cast<long>(std::floor(spot.u / 0.075)) + static_cast<long>(std::floor(spot.v / 0.075))) & 1) != 0;
    if (std::max(std::abs(spot.u), std::abs(spot.v)) > 0.525) dark = false;
  }
  return {dark ? black : white, spot.normal};
}

Surface painted(const Finish& finish, const Spot& spot) {
  switch (finish.material) {
    case Material::floor:
      return floor_slabs(spot);
    case Material::brick:
      return bricks(spot);
    case Material::stone:
      return stone(spot, finish.tint);
    case Material::fluted_stone:
      return fluted(spot, finish.tint);
    case Material::plaster:
      return plaster(spot, finish.tint);
    case Material::roof_tiles:
      return roof_tiles(spot);
    case Material::wood:
      return planks(spot, finish.tint, 0.12);
    case Material::door:
      return planks({spot.position, spot.normal, spot.v, spot.u, spot.extent_v, spot.extent_u}, finish.tint, 0.15);
    case Material::leaves:
      return leaves(spot, finish.tint);
    case Material::earth:
      return {Vec3{0.16, 0.10, 0.06} * (0.6 + 0.8 * speckle(spot.position, 0.05)), spot.normal};
    case Material::lacquer:
      return {finish.tint, spot.normal, 1.2, 0.05};
    case Material::steel:
      return {Vec3{0.05, 0.05, 0.055}, spot.normal, 2.0, 0.85};
    case Material::iron:
      return {Vec3{0.05, 0.055, 0.06}, spot.normal, 0.5, 0};
    case Material::board:
      return lettered(*finish.board, spot);
    case Material::chart:
      return test_chart(spot);
  }
  return {};
}

}  // namespace biseam::scene
