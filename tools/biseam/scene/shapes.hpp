// The solids the virtual place is built of, and where a ray meets them.
#pragma once

#include "scene/camera.hpp"
#include "scene/materials.hpp"

namespace biseam::scene {

// A ray made ready for many meetings.
struct Beam {
  Vec3 origin, direction, inverse;  // inverse: of the direction, component by component, finite

  explicit Beam(const Ray& ray);
};

struct Hit {
  double distance = 1e30;
  Vec3 normal;  // length 1, towards the ray's origin
  const struct Shape* shape = nullptr;
};

enum class Solid {
  box,        // a: least corner, b: greatest corner
  roof,       // the same box under a gable whose ridge runs along x in the middle of the top
  ellipsoid,  // a: centre, b: half axes
  cylinder    // upright; a: centre of the top, b: x radius at the top, y the foot, z radius at the foot
};

struct Shape {
  Solid solid;
  Vec3 a, b;
  Finish finish;
};

// Meets of less than `least` metres are passed over, and so are ellipsoids and cylinders seen from within.  True when hit
// became nearer.
bool meet(const Shape& shape, const Beam& beam, double least, Hit& hit);

// The box around a shape.
struct Bounds {
  Vec3 low{1e30, 1e30, 1e30}, high{-1e30, -1e30, -1e30};

  void take_in(const Bounds& other);
};
Bounds bounds_of(const Shape& shape);

// A ball around a shape.
struct Sphere {
  Vec3 centre;
  double radius;
};
Sphere sphere_around(const Shape& shape);

}  // namespace biseam::scene
