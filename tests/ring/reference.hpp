// The panorama by its definition: double precision, sample by sample, with libm, without a mesh, phases or fixed point.  Shares
// no code with the library; of its headers only the records of cameras and views.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "camera/camera.hpp"
#include "camera/view.hpp"

namespace biseam::test {

// ---- Geometry ----------------------------------------------------------------------------------------------------------

struct Place {
  double x, y;
  double angle;  // radians from the lens's axis
};

struct RingPlace {
  double t, b;  // radians, 0 <= t < 2 pi
};

// Of the panorama's luma position (x, y).
Vec3 reference_direction(const View& view, double x, double y);
Place reference_place(const Camera& camera, int lens, const Vec3& direction);
RingPlace reference_ring(const Vec3& direction);

// ---- Sampling ----------------------------------------------------------------------------------------------------------

enum class Kernel { bilinear, cubic, spline36 };

// One channel.  Where its samples stand: every sub_x-th luma sample across, the first offset_x luma samples from the first one.
struct ReferencePlane {
  std::vector<double> samples;  // code values, row by row
  int width = 0, height = 0;
  int sub_x = 1, sub_y = 1;
  double offset_x = 0, offset_y = 0;

  double at(int x, int y) const;  // the nearest sample's outside
};

// By how much a kernel is widened along the picture's axes, each 1 or more.
struct Widening {
  double x = 1, y = 1;
};

// The derivatives of a position in the picture's plane by the sample position in the panorama's plane.
struct Shrink {
  double xx, xy, yx, yy;  // xy: of the picture's x by the panorama's y
};

// As wide as what one sample of the panorama covers along each axis.
Widening covering(const Shrink& shrink);

// x, y: in samples of the plane.
double reference_sample(const ReferencePlane& plane, Kernel kernel, double x, double y, const Widening& widening);

// ---- The panorama ------------------------------------------------------------------------------------------------------

// A place on the ring: sample(k) gives what lens k shows there.
struct RingSample {
  RingPlace place;
  int x, y;  // of the sample in the panorama's plane
  std::function<double(int lens)> sample;
};

struct ReferenceFrame {
  Camera camera;
  View view;
  Kernel kernel = Kernel::cubic;
  double half_width = 0;  // of the ring, radians; from there on only the lens that looks there counts
  std::function<Widening(const Shrink&)> widening = covering;
  std::function<double(const RingSample&)> blend;  // inside the ring
};

// One channel of the panorama, not rounded.  grid: where its samples stand; its own samples are not read.
std::vector<double> reference_panorama(const ReferenceFrame& frame, const ReferencePlane (&pictures)[2],
                                       const ReferencePlane& grid);

}  // namespace biseam::test
