// What a panorama shows where: from its pixels to directions of the world and back.
#pragma once

#include "camera/rotation.hpp"

namespace biseam {

struct View {
  int width = 0, height = 0;  // of the panorama
  Turn turn;                  // where its middle looks, from lens 1's ideal axis
};

// Radians; x and y may be any number, an integer being the middle of a pixel.
double longitude_of(const View& view, double x) noexcept;
double latitude_of(const View& view, double y) noexcept;

// Length 1.
Vec3 direction_at(const View& view, double x, double y) noexcept;

struct ViewPoint {
  double x, y;  // -0.5 <= x <= width - 0.5, -0.5 <= y <= height - 0.5
};

// Where a direction, of any length but 0, is shown.
ViewPoint shown_at(const View& view, const Vec3& direction) noexcept;

}  // namespace biseam
