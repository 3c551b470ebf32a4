// Many shapes in a tree of boxes, so that a ray is tried against few of them.
#pragma once

#include <vector>

#include "scene/shapes.hpp"

namespace biseam::scene {

class ShapeTree {
 public:
  explicit ShapeTree(std::vector<Shape> shapes);

  // The nearest meeting, if it is nearer than hit.  The hit points into the tree.
  void meet(const Beam& beam, Hit& hit) const;

  // Whether anything at all is in the way.
  bool blocks(const Beam& beam) const;

 private:
  struct Node {
    Bounds bounds;
    int first, count;              // shapes of a leaf; of an inner node, whose first child is the next node: its second, 0
    double Vec3::*axis = nullptr;  // of an inner node: along which the first child lies lower than the second
  };

  int grow(int first, int count);

  // Visits the leaves whose boxes the beam reaches before `farthest`, which may shrink meanwhile, roughly from near to far,
  // until visit(shape) returns true.
  template <class Visit>
  bool walk(const Beam& beam, const double& farthest, const Visit& visit) const;

  std::vector<Shape> shapes_;
  std::vector<Node> nodes_;
};

}  // namespace biseam::scene
