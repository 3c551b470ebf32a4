#include "scene/shape_tree.hpp"

#include <algorithm>

namespace biseam::scene {

ShapeTree::ShapeTree(std::vector<Shape> shapes) : shapes_(std::move(shapes)) { grow(0, static_cast<int>(shapes_.size())); }

int ShapeTree::grow(int first, int count) {
  const int index = static_cast<int>(nodes_.size());
  Bounds bounds;
  for (int i = first; i < first + count; ++i) bounds.take_in(bounds_of(shapes_[i]));
  nodes_.push_back({bounds, first, count});
  if (count <= 2) return index;
  const Vec3 extent = bounds.high - bounds.low;
  double Vec3::*axis = extent.x >= extent.z ? &Vec3::x : &Vec3::z;
  if (extent.y > extent.*axis) axis = &Vec3::y;
  nodes_[index].axis = axis;
  const auto place = [&](const Shape& shape) {
    const Bounds own = bounds_of(shape);
    return own.low.*axis + own.high.*axis;
  };
  const auto from = shapes_.begin() + first;
  std::nth_element(from, from + count / 2, from + count, [&](const Shape& a, const Shape& b) { return place(a) < place(b); });
  grow(first, count / 2);
  const int second = grow(first + count / 2, count - count / 2);
  nodes_[index].first = second;
  nodes_[index].count = 0;
  return index;
}

// False when the beam passes the box, or reaches it only beyond `farthest`.
static bool reaches(const Beam& beam, const Bounds& bounds, double farthest) {
  const Vec3 a = (bounds.low - beam.origin) * beam.inverse, b = (bounds.high - beam.origin) * beam.inverse;
  const double enter = std::max(std::max(std::min(a.x, b.x), std::min(a.y, b.y)), std::max(std::min(a.z, b.z), 0.0));
  const double leave = std::min(std::min(std::max(a.x, b.x), std::max(a.y, b.y)), std::min(std::max(a.z, b.z), farthest));
  return enter <= leave;
}

// A median split of n shapes is at most log2(n) deep; one waiting node a level.
static constexpr int kDeepest = 32;

template <class Visit>
bool ShapeTree::walk(const Beam& beam, const double& farthest, const Visit& visit) const {
  int waiting[kDeepest], count = 0;
  waiting[count++] = 0;
  while (count > 0) {
    const int index = waiting[--count];
    const Node& node = nodes_[index];
    if (!reaches(beam, node.bounds, farthest)) continue;
    for (int i = node.first; i < node.first + node.count; ++i) {
      if (visit(shapes_[i])) return true;
    }
    if (!node.axis) continue;
    const bool upwards = beam.direction.*node.axis > 0;
    waiting[count++] = upwards ? node.first : index + 1;
    waiting[count++] = upwards ? index + 1 : node.first;
  }
  return false;
}

void ShapeTree::meet(const Beam& beam, Hit& hit) const {
  walk(beam, hit.distance, [&](const Shape& shape) {
    scene::meet(shape, beam, 1e-4, hit);
    return false;
  });
}

bool ShapeTree::blocks(const Beam& beam) const {
  Hit hit;
  return walk(beam, hit.distance, [&](const Shape& shape) { return scene::meet(shape, beam, 1e-4, hit); });
}

}  // namespace biseam::scene
