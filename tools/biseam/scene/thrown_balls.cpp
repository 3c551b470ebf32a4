#include "scene/thrown_balls.hpp"

#include <numbers>

#include "scene/courtyard.hpp"

namespace biseam::scene {

// Each comes back to its pedestal after a lap.
struct Flight {
  double x, z, radius;  // metres
  double lap;           // seconds; negative: towards smaller longitudes
  double rise;          // metres over the pedestal, enough to pass over what stands in the way
  Vec3 tint;
};

static Shape ball_of(const Flight& flight, double seconds) {
  const double laps = seconds / flight.lap, turn = 2 * std::numbers::pi * laps;
  const double to_top = 2 * (laps - std::floor(laps)) - 1;
  const double lift = flight.rise * (1 - to_top * to_top * to_top * to_top);
  const double x = flight.x * std::cos(turn) + flight.z * std::sin(turn);
  const double z = flight.z * std::cos(turn) - flight.x * std::sin(turn);
  const Vec3 centre{x, y_of_height(kPedestalHeight + flight.radius + lift), z};
  return {Solid::ellipsoid, centre, {flight.radius, flight.radius, flight.radius}, {Material::lacquer, flight.tint}};
}

ThrownBalls thrown_balls(double seconds) {
  return {ball_of({-2.5, 0.28, 0.26, -4, 1.0, {0.55, 0.03, 0.025}}, seconds),
          ball_of({1.75, 1.9, 0.24, 4, 1.8, {0.04, 0.16, 0.36}}, seconds)};
}

}  // namespace biseam::scene
