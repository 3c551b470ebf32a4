// The light that reaches the camera from the courtyard and the sky over it.
#pragma once

#include <memory>
#include <vector>

#include "scene/courtyard.hpp"
#include "scene/placards.hpp"
#include "scene/shape_tree.hpp"
#include "scene/thrown_balls.hpp"

namespace biseam::scene {

// What a ray met.
struct Sight {
  Vec3 light;                // linear
  double distance = 1e30;    // metres; 1e30: the sky
  bool is_mirrored = false;  // some of the light came round by a mirror
};

class Place {
 public:
  // placards: metres to those that stand on the seams; 0: there are none.
  explicit Place(double placards = 0);

  // Everything is put where it is so many seconds after the start.
  void go_to(double seconds);

  // What moves: the thrown balls, then the placards.
  const std::vector<Shape>& moving() const { return moving_; }

  // What comes in along a ray; sample_angle: width of the cone that the ray stands for, radians.
  Sight look(const Ray& ray, double sample_angle) const;

  // Metres to the first thing met; 1e30 for the sky.
  double distance_along(const Ray& ray) const { return first_hit(ray).distance; }

 private:
  Hit first_hit(const Ray& ray) const;
  bool in_shade(Vec3 position, Vec3 normal) const;
  double openness(Vec3 position, Vec3 normal) const;
  Sight lit(const Ray& ray, const Hit& hit, double sample_angle, int bounces) const;

  Courtyard yard_;
  ShapeTree tree_;
  std::unique_ptr<const Placards> placards_;
  std::vector<Shape> moving_;
};

}  // namespace biseam::scene
