#include "scene/shapes.hpp"

#include <algorithm>

namespace biseam::scene {

static double inverse_of(double component) { return 1 / (std::abs(component) < 1e-12 ? 1e-12 : component); }

Beam::Beam(const Ray& ray)
    : origin(ray.origin),
      direction(ray.direction),
      inverse{inverse_of(ray.direction.x), inverse_of(ray.direction.y), inverse_of(ray.direction.z)} {}

// The part of a ray inside a convex solid, and the outward normals where it enters and leaves.
struct Span {
  double enter = -1e30, leave = 1e30;
  Vec3 normal_in, normal_out;

  void clip(double from, double to, Vec3 normal_from, Vec3 normal_to) {
    if (from > to) std::swap(from, to), std::swap(normal_from, normal_to);
    if (from > enter) enter = from, normal_in = normal_from;
    if (to < leave) leave = to, normal_out = normal_to;
  }

  // Keeps the side where dot(normal, p) <= offset.
  void cut(const Beam& beam, Vec3 normal, double offset) {
    const double inverse = inverse_of(dot(normal, beam.direction));  // its sign goes with at, also along the plane
    const double at = (offset - dot(normal, beam.origin)) * inverse;
    if (inverse < 0 && at > enter) enter = at, normal_in = normal;
    if (inverse > 0 && at < leave) leave = at, normal_out = normal;
  }
};

static bool nearer(double at, double least, Vec3 normal, const Shape& shape, Hit& hit) {
  if (!(at > least) || at >= hit.distance) return false;
  hit = {at, normal, &shape};
  return true;
}

static bool meet_convex(const Shape& shape, const Beam& beam, double least, Hit& hit) {
  const Vec3 from = (shape.a - beam.origin) * beam.inverse, to = (shape.b - beam.origin) * beam.inverse;
  Span span;
  span.clip(from.x, to.x, {-1, 0, 0}, {1, 0, 0});
  span.clip(from.y, to.y, {0, -1, 0}, {0, 1, 0});
  span.clip(from.z, to.z, {0, 0, -1}, {0, 0, 1});
  if (span.enter >= span.leave || span.leave < least) return false;
  if (shape.solid == Solid::roof) {
    const double middle = (shape.a.z + shape.b.z) / 2;
    const Vec3 slope = normalised({0, -(shape.b.z - middle), shape.b.y - shape.a.y}), other{0, slope.y, -slope.z};
    const Vec3 ridge{0, shape.a.y, middle};
    span.cut(beam, slope, dot(slope, ridge));
    span.cut(beam, other, dot(other, ridge));
    if (span.enter >= span.leave) return false;
  }
  if (span.enter > least) return nearer(span.enter, least, span.normal_in, shape, hit);
  return nearer(span.leave, least, -span.normal_out, shape, hit);
}

static bool meet_ellipsoid(const Shape& shape, const Beam& beam, double least, Hit& hit) {
  const Vec3 k{1 / shape.b.x, 1 / shape.b.y, 1 / shape.b.z};
  const Vec3 o = (beam.origin - shape.a) * k, d = beam.direction * k;
  const double dd = dot(d, d), od = dot(o, d), rest = od * od - dd * (dot(o, o) - 1);
  if (rest < 0) return false;
  const double at = (-od - std::sqrt(rest)) / dd;
  return nearer(at, least, normalised((o + d * at) * k), shape, hit);
}

// The mantle of a cylinder or of a cut cone; its ends are covered by other solids.
static bool meet_cylinder(const Shape& shape, const Beam& beam, double least, Hit& hit) {
  const double top = shape.a.y, foot = shape.b.y, growth = (shape.b.z - shape.b.x) / (foot - top);
  const double ox = beam.origin.x - shape.a.x, oz = beam.origin.z - shape.a.z;
  const double radius = shape.b.x + growth * (beam.origin.y - top), widening = growth * beam.direction.y;
  const double a = beam.direction.x * beam.direction.x + beam.direction.z * beam.direction.z - widening * widening;
  const double half_b = ox * beam.direction.x + oz * beam.direction.z - radius * widening;
  const double rest = half_b * half_b - a * (ox * ox + oz * oz - radius * radius);
  if (rest < 0) return false;
  // Where the ray comes in, be it flatter than the mantle (a > 0) or steeper (a < 0); the form that also holds for a = 0.
  const double at = (ox * ox + oz * oz - radius * radius) / (std::sqrt(rest) - half_b);
  const double y = beam.origin.y + at * beam.direction.y;
  if (!(y >= top && y <= foot)) return false;
  const double x = ox + at * beam.direction.x, z = oz + at * beam.direction.z;
  return nearer(at, least, normalised({x, -growth * std::hypot(x, z), z}), shape, hit);
}

bool meet(const Shape& shape, const Beam& beam, double least, Hit& hit) {
  switch (shape.solid) {
    case Solid::ellipsoid:
      return meet_ellipsoid(shape, beam, least, hit);
    case Solid::cylinder:
      return meet_cylinder(shape, beam, least, hit);
    default:
      return meet_convex(shape, beam, least, hit);
  }
}

void Bounds::take_in(const Bounds& other) {
  low = {std::min(low.x, other.low.x), std::min(low.y, other.low.y), std::min(low.z, other.low.z)};
  high = {std::max(high.x, other.high.x), std::max(high.y, other.high.y), std::max(high.z, other.high.z)};
}

Bounds bounds_of(const Shape& shape) {
  if (shape.solid == Solid::ellipsoid) return {shape.a - shape.b, shape.a + shape.b};
  if (shape.solid != Solid::cylinder) return {shape.a, shape.b};
  const double radius = std::max(shape.b.x, shape.b.z);
  return {{shape.a.x - radius, shape.a.y, shape.a.z - radius}, {shape.a.x + radius, shape.b.y, shape.a.z + radius}};
}

Sphere sphere_around(const Shape& shape) {
  if (shape.solid == Solid::ellipsoid) return {shape.a, std::max({shape.b.x, shape.b.y, shape.b.z})};
  const Bounds box = bounds_of(shape);
  return {(box.low + box.high) * 0.5, 0.5 * length(box.high - box.low)};
}

}  // namespace biseam::scene
