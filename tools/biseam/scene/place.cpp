#include "scene/place.hpp"

#include <algorithm>

#include "scene/light.hpp"

namespace biseam::scene {

// Metres that a ray travels at least, so that it doesn't meet again what it starts from.
static constexpr double kLeast = 1e-4;

Place::Place(double placards)
    : yard_(build_courtyard()),
      tree_(yard_.shapes),
      placards_(placards > 0 ? std::make_unique<const Placards>(placards) : nullptr) {
  go_to(0);
}

void Place::go_to(double seconds) {
  const ThrownBalls balls = thrown_balls(seconds);
  moving_.assign(balls.begin(), balls.end());
  if (!placards_) return;
  const auto standing = placards_->at(seconds);
  moving_.insert(moving_.end(), standing.begin(), standing.end());
}

Hit Place::first_hit(const Ray& ray) const {
  const Beam beam(ray);
  Hit hit;
  static constexpr Shape floor{Solid::box, {-200, kEyeHeight, -200}, {200, kEyeHeight + 1, 200}, {Material::floor}};
  if (ray.direction.y > 0) meet(floor, beam, kLeast, hit);
  tree_.meet(beam, hit);
  for (const Shape& shape : moving_) meet(shape, beam, kLeast, hit);
  return hit;
}

bool Place::in_shade(Vec3 position, Vec3 normal) const {
  const Beam beam({position + normal * kLeast, towards_sun()});
  Hit hit;
  for (const Shape& shape : moving_) {
    if (meet(shape, beam, kLeast, hit)) return true;
  }
  return tree_.blocks(beam);
}

// How much of the sky's light gets into corners and around the feet of things, 0 .. 1.
double Place::openness(Vec3 p, Vec3 normal) const {
  double open = 1;
  if (std::abs(normal.y) < 0.5) return 1 - 0.45 * std::exp(-(kEyeHeight - p.y) / 0.3);
  if (p.y < y_of_height(0.01)) return 1;
  for (const double gap : {kHalfYard - p.x, kHalfYard + p.x, kHalfYard - p.z, kHalfYard + p.z}) {
    if (gap >= 0) open *= 1 - 0.45 * std::exp(-gap / 0.45);
  }
  for (const Bounds& foot : yard_.footprints) {
    const double dx = std::max({foot.low.x - p.x, p.x - foot.high.x, 0.0}),
                 dz = std::max({foot.low.z - p.z, p.z - foot.high.z, 0.0});
    const double square = dx * dx + dz * dz;
    if (square < 1) open *= 1 - 0.55 * std::exp(-std::sqrt(square) / 0.22);
  }
  return open;
}

static Spot spot_of(const Ray& ray, const Hit& hit, double sample_angle) {
  Spot spot{ray.origin + ray.direction * hit.distance, hit.normal, 0, 0, 0, 0};
  const bool level = std::abs(hit.normal.y) > 0.5 && hit.shape->solid != Solid::roof;
  const bool facing_z = std::abs(hit.normal.z) > std::abs(hit.normal.x);
  const Vec3 right = level      ? Vec3{1, 0, 0}
                     : facing_z ? Vec3{hit.normal.z > 0 ? -1.0 : 1.0, 0, 0}
                                : Vec3{0, 0, hit.normal.x > 0 ? 1.0 : -1.0};
  const Vec3 rise = level ? Vec3{0, 0, 1} : Vec3{0, -1, 0};
  const bool framed = hit.shape->finish.material == Material::board || hit.shape->finish.material == Material::chart;
  const Vec3 from = framed ? (hit.shape->a + hit.shape->b) * 0.5 : Vec3{0, kEyeHeight, 0};
  spot.u = dot(spot.position - from, right);
  spot.v = dot(spot.position - from, rise);
  const double across = hit.distance * sample_angle;
  const double slant = 1 / std::max(0.02, std::abs(dot(hit.normal, ray.direction))) - 1;
  spot.extent_u = across * (1 + std::abs(dot(ray.direction, right)) * slant);
  spot.extent_v = across * (1 + std::abs(dot(ray.direction, rise)) * slant);
  return spot;
}

Sight Place::lit(const Ray& ray, const Hit& hit, double sample_angle, int bounces) const {
  const Spot spot = spot_of(ray, hit, sample_angle);
  const Surface surface = painted(hit.shape->finish, spot);
  Vec3 light = skylight(surface.normal) * openness(spot.position, hit.normal);
  const double facing = std::max(0.0, dot(surface.normal, towards_sun()));
  Vec3 colour;
  if (facing > 0 && dot(hit.normal, towards_sun()) > 0 && !in_shade(spot.position, hit.normal)) {
    light = light + sunlight() * facing;
    const Vec3 halfway = normalised(towards_sun() - ray.direction);
    colour = sunlight() * (surface.gloss * std::pow(std::max(0.0, dot(halfway, surface.normal)), 60));
  }
  colour = colour + surface.albedo * light;
  const bool is_mirrored = surface.mirror > 0 && bounces > 0;
  if (is_mirrored) {
    const Vec3 back = ray.direction - hit.normal * (2 * dot(ray.direction, hit.normal));
    const Ray reflected{spot.position + hit.normal * kLeast, back};
    const Hit next = first_hit(reflected);
    const Vec3 seen = next.shape == nullptr ? sky(back) : lit(reflected, next, sample_angle * 3, bounces - 1).light;
    colour = colour + seen * surface.mirror;
  }
  return {colour, hit.distance, is_mirrored};
}

Sight Place::look(const Ray& ray, double sample_angle) const {
  const Hit hit = first_hit(ray);
  return hit.shape == nullptr ? Sight{sky(ray.direction)} : lit(ray, hit, sample_angle, 1);
}

}  // namespace biseam::scene
