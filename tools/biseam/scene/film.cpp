#include "scene/film.hpp"

#include <algorithm>

#include "scene/light.hpp"

namespace biseam::scene {

Film::Film(const View& view, const Place& place)
    : view_(view), shown_(place.moving()), first_(static_cast<std::size_t>(view.width) * view.height) {
  for_each_row(view.height, [&](int y) {
    Pixel* row = &first_[static_cast<std::size_t>(y) * view.width];
    for (int x = 0; x < view.width; ++x) row[x] = render_pixel(place, view, x, y);
  });
}

// Metres from the origin to the nearest point between a and b.
static double distance_to(Vec3 a, Vec3 b) {
  const Vec3 way = b - a;
  const double square = dot(way, way);
  const double share = square > 0 ? std::clamp(-dot(a, way) / square, 0.0, 1.0) : 0;
  return length(a + way * share);
}

static Vec3 across(Vec3 v, Vec3 axis) { return v - axis * dot(v, axis); }

// Whether a shape can be in the way of what the pixel sees, or of the sun's light on that.
bool Film::is_touched(const Pixel& first, const Ray& ray, const Shape& shape) const {
  constexpr double kSlack = 0.01;  // metres
  const Sphere around = sphere_around(shape);
  const Vec3 centre = around.centre - ray.origin;
  const double reach = around.radius + kSlack, away = length(centre);
  if (dot(centre, ray.direction) > -reach && length(across(centre, ray.direction)) < reach + away * view_.pixel_angle)
    return true;
  if (first.farthest == 0) return false;
  const Vec3 sun = towards_sun();
  const double to_shadow =
      distance_to(across(ray.direction * first.nearest - centre, sun), across(ray.direction * first.farthest - centre, sun));
  return to_shadow < reach + first.farthest * view_.pixel_angle;
}

Frame Film::picture(const Place& place) const {
  Frame frame{view_.width, view_.height, std::vector<Vec3>(first_.size())};
  const std::vector<Shape>& moved = place.moving();
  for_each_row(view_.height, [&](int y) {
    for (int x = 0; x < view_.width; ++x) {
      const std::size_t at = static_cast<std::size_t>(y) * view_.width + x;
      const Pixel& first = first_[at];
      const std::optional<Ray> ray = view_.ray({double(x), double(y)});
      const auto touches = [&](const Shape& shape) { return !ray || is_touched(first, *ray, shape); };
      const bool anew = first.is_mirrored || std::any_of(shown_.begin(), shown_.end(), touches) ||
                        std::any_of(moved.begin(), moved.end(), touches);
      frame.pixels[at] = anew ? render_pixel(place, view_, x, y).light : first.light;
    }
  });
  return frame;
}

}  // namespace biseam::scene
