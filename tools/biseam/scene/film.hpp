// One camera's pictures at several instants.
#pragma once

#include "scene/render.hpp"

namespace biseam::scene {

// Keeps the first picture and renders only what can differ from it.
class Film {
 public:
  // The first picture shows the place as it is now.
  Film(const View& view, const Place& place);

  // The same place at any instant, exactly as render() shows it.
  Frame picture(const Place& place) const;

 private:
  bool is_touched(const Pixel& first, const Ray& ray, const Shape& shape) const;

  View view_;
  std::vector<Shape> shown_;  // what moves, in the first picture
  std::vector<Pixel> first_;  // row by row
};

}  // namespace biseam::scene
