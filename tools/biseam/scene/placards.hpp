// Near things in the virtual place: two lettered placards, one at either seam, that swing over it.
#pragma once

#include <array>

#include "scene/shapes.hpp"

namespace biseam::scene {

constexpr double kLeastPlacardDistance = 0.3, kMostPlacardDistance = 4;  // metres

class Placards {
 public:
  // Their lettered faces are so many metres to the camera's right and left; seen from it they are as large at any distance.
  explicit Placards(double distance);
  Placards(const Placards&) = delete;
  Placards& operator=(const Placards&) = delete;

  // Where they are so many seconds after both stood on the seams.  They point to what is lettered on them, which is kept here.
  std::array<Shape, 2> at(double seconds) const;

 private:
  double distance_;
  Board boards_[2];
};

}  // namespace biseam::scene
