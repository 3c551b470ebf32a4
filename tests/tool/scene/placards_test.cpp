#include "scene/placards.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "scene/place.hpp"

namespace biseam::scene {
namespace {

TEST(Placards, FaceTheCameraFromTheirDistance) {
  for (const double distance : {0.5, 1.0, 2.75}) {
    const Place place(distance);
    for (const double side : {1.0, -1.0}) {
      EXPECT_NEAR(place.distance_along({{0, 0, 0}, {side, 0, 0}}), distance, 1e-9);
      const double edge = std::hypot(1, 0.24, 0.27);
      EXPECT_NEAR(place.distance_along({{0, 0, 0}, normalised({side, -0.24, 0.27})}), distance * edge, 1e-9);
      EXPECT_GT(place.distance_along({{0, 0, 0}, normalised({side, -0.26, 0})}), distance * 1.1) << "above it";
      EXPECT_GT(place.distance_along({{0, 0, 0}, normalised({side, 0, 0.29})}), distance * 1.1) << "beside it";
    }
  }
}

TEST(Placards, SwingOverBothSeamsAndBack) {
  const Placards placards(2);
  EXPECT_NEAR(placards.at(0)[0].a.z, -placards.at(0)[0].b.z, 1e-12);
  bool beyond[2] = {};
  for (int frame = 0; frame < 120; ++frame) {
    const auto now = placards.at(frame / 30.0), next = placards.at((frame + 1) / 30.0);
    for (std::size_t k = 0; k < 2; ++k) {
      EXPECT_LT(std::abs(next[k].a.z - now[k].a.z), 0.06) << "more than a fast walk";
      EXPECT_NEAR(now[k].b.z - now[k].a.z, 0.56 * 2, 1e-12);
      if (now[k].a.z > 0) beyond[0] = true;
      if (now[k].b.z < 0) beyond[1] = true;
    }
  }
  EXPECT_TRUE(beyond[0] && beyond[1]);
}

// What is lettered goes along: from a camera that goes along too nothing changes but the light.
TEST(Placards, CarryTheirLettering) {
  Place place(1);
  const auto ink_at = [&](double z, double u, double v) {
    const Vec3 light = place.look({{0, 0, z}, normalised({1, v, u})}, 1e-4).light;
    return light.z > 0.35 * light.x;
  };
  place.go_to(0);
  int dark = 0, same = 0, count = 0;
  std::array<bool, 400> first{};
  const auto each = [&](auto&& visit) {
    for (int n = 0; n < 400; ++n) visit(static_cast<std::size_t>(n), 0.024 * (n % 20 - 9.5), 0.022 * (n / 20 - 9.5));
  };
  each([&](std::size_t n, double u, double v) { first[n] = ink_at(0, u, v); });
  place.go_to(0.5);
  const double z = 0.5 * (place.moving()[2].a.z + place.moving()[2].b.z);
  EXPECT_GT(std::abs(z), 0.2);
  each([&](std::size_t n, double u, double v) {
    dark += first[n];
    same += first[n] == ink_at(z, u, v);
    ++count;
  });
  EXPECT_EQ(same, count);
  EXPECT_GT(dark, count / 20);
  EXPECT_LT(dark, count / 2);
}

TEST(Placards, StandInNoPlaceThatAsksForNone) {
  EXPECT_EQ(Place().moving().size(), 2u);
  EXPECT_EQ(Place(1).moving().size(), 4u);
}

}  // namespace
}  // namespace biseam::scene
