// The virtual camera: two equidistant fisheyes back to back, and the panorama as seen from the middle between them.
//
// Coordinates in a picture are pixel indices: an integer is the centre of a pixel, and the middle of n pixels is (n - 1) / 2.
#pragma once

#include "scene/vector.hpp"

namespace biseam::scene {

struct Ray {
  Vec3 origin, direction;  // direction has length 1
};

struct Position {
  double u, v;
};

// Longitude from the panorama's wrap-around, growing to the right; latitude positive below the horizon.  Radians.
Vec3 direction_of(double longitude, double latitude);

struct PanoramaView {
  int width, height;

  // Column x lies at longitude (x + 1) * 2 pi / width, row y at latitude -pi/2 + (y + 1) * pi / height.
  Vec3 direction(Position at) const;
  Position project(Vec3 direction) const;  // 0 <= u + 1 < width
};

struct Fisheye {
  int index;  // 0 looks along longitude 0, 1 along longitude pi
  int size;   // pixels, width and height
  double pixels_per_radian;
  double field_of_view;  // full angle, radians
  Position centre;

  // The image circle of field_of_view just fits into size x size pixels.
  static Fisheye fitting(int index, int size, double field_of_view);

  bool sees(Position at) const;
  Vec3 direction(Position at) const;
  Position project(Vec3 direction) const;

  // The entrance pupil when the two pupils are baseline metres apart along the common axis.
  Vec3 pupil(double baseline) const;
};

}  // namespace biseam::scene
