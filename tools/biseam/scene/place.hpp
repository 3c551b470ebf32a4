// The light that reaches the camera from the courtyard and the sky over it.
#pragma once

#include "scene/courtyard.hpp"
#include "scene/shape_tree.hpp"

namespace biseam::scene {

class Place {
 public:
  Place();

  // Linear light that comes in along a ray; sample_angle: width of the cone that the ray stands for, radians.
  Vec3 light_along(const Ray& ray, double sample_angle) const;

  // Metres to the first thing met; 1e30 for the sky.
  double distance_along(const Ray& ray) const { return first_hit(ray).distance; }

 private:
  Hit first_hit(const Ray& ray) const;
  bool in_shade(Vec3 position, Vec3 normal) const;
  double openness(Vec3 position, Vec3 normal) const;
  Vec3 lit(const Ray& ray, const Hit& hit, double sample_angle, int bounces) const;

  Courtyard yard_;
  ShapeTree tree_;
};

}  // namespace biseam::scene
