// The virtual camera: lenses as the library draws them, back to back, and the panorama as seen from the middle between them.
// The place's z is where lens 0 looks; in the library's world lens 1 looks that way.
//
// Coordinates in a picture are pixel indices: an integer is the middle of a pixel, and the middle of n pixels is (n - 1) / 2.
#pragma once

#include "camera/projector.hpp"
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

  Vec3 direction(Position at) const;
  Position project(Vec3 direction) const;  // -0.5 <= u <= width - 0.5
};

class Fisheye {
 public:
  // index 0 looks along z, 1 the other way.
  Fisheye(int index, const Lens& lens);

  // The image circle of field_of_view, radians, just fits into size x size pixels.
  static Fisheye fitting(int index, int size, double field_of_view);

  const Lens& lens() const { return lens_; }

  // Whether a position lies in the image circle.
  bool sees(Position at) const;

  Vec3 direction(Position at) const;       // of a position in the image circle
  Position project(Vec3 direction) const;  // within the angle of view and a little beyond

  // The entrance pupil when the two pupils are baseline metres apart along the common axis.
  Vec3 pupil(double baseline) const;

 private:
  int index_;
  Lens lens_;
  Projector projector_;
};

}  // namespace biseam::scene
