#include "scene/materials.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "support/random_source.hpp"

namespace biseam::scene {
namespace {

using std::numbers::pi;

constexpr double kPoint = 1e-6;  // extent of a sample that covers next to nothing

double brightness(Vec3 colour) { return colour.x + colour.y + colour.z; }

Spot level(double u, double v, double extent = kPoint) { return {{u, 1.5, v}, {0, -1, 0}, u, v, extent, extent}; }
Spot upright(double u, double v, double extent = kPoint) { return {{u, -v, 5}, {0, 0, -1}, u, v, extent, extent}; }

const Board& sign() {
  static const Board board{{tool::Lettering("HI"), tool::Lettering("O")}, 2.0, 1.0, 0.25, {0.1, 0.2, 0.3}, {0.9, 0.8, 0.7}};
  return board;
}

// A tint with which none reflects more than falls on it.
Finish finish_of(Material material) { return {material, {0.85, 0.85, 0.85}, &sign()}; }

TEST(Materials, EverySpotOfEveryOneReflectsSomeOfTheLight) {
  test::RandomSource random;
  const auto any = [&](float reach) { return double(random.real_between(-reach, reach)); };
  for (int which = 0; which <= int(Material::chart); ++which) {
    for (int n = 0; n < 3000; ++n) {
      const double extent = n % 3 == 0 ? kPoint : std::abs(any(n % 3 == 1 ? 0.01F : 3));
      const Vec3 normal = n % 2 == 0 ? Vec3{0, -1, 0} : normalised({any(1), 0.001, any(1)});
      const Vec3 position{any(9), any(3), any(9)};
      const Surface surface = painted(finish_of(Material(which)), {position, normal, any(6), any(6), extent, extent});
      for (const double part : {surface.albedo.x, surface.albedo.y, surface.albedo.z}) {
        ASSERT_TRUE(part >= 0 && part <= 1) << which << ": " << part;
      }
      ASSERT_NEAR(length(surface.normal), 1, 1e-9) << which;
      ASSERT_TRUE(surface.mirror >= 0 && surface.mirror < 1) << which;
      ASSERT_GE(surface.gloss, 0) << which;
    }
  }
}

TEST(Materials, LookTheSameEveryTime) {
  for (int which = 0; which <= int(Material::chart); ++which) {
    const Spot spot = upright(0.371, 0.52, 0.01);
    const Surface once = painted(finish_of(Material(which)), spot), again = painted(finish_of(Material(which)), spot);
    EXPECT_EQ(length(once.albedo - again.albedo), 0) << which;
    EXPECT_EQ(length(once.normal - again.normal), 0) << which;
  }
}

TEST(Materials, ATintMultipliesTheColour) {
  for (const Material material : {Material::stone, Material::fluted_stone, Material::wood, Material::door, Material::leaves}) {
    const Vec3 tint{0.5, 0.25, 1};
    const Vec3 plain = painted({material}, upright(0.1, 0.2)).albedo,
               tinted = painted({material, tint}, upright(0.1, 0.2)).albedo;
    EXPECT_NEAR(length(tinted - plain * tint), 0, 1e-12) << int(material);
  }
}

// Along a circle each of the 36 rays is one change to dark and one back.
TEST(Chart, HasThirtySixRaysOfEqualBreadth) {
  constexpr int kSteps = 36000;
  int changes = 0, dark = 0;
  const auto is_dark = [&](int step) {
    const double angle = (step + 0.5) * 2 * pi / kSteps;
    return brightness(painted({Material::chart}, upright(0.3 * std::sin(angle), 0.3 * std::cos(angle))).albedo) < 1;
  };
  for (int step = 0; step < kSteps; ++step) {
    dark += is_dark(step);
    changes += is_dark(step) != is_dark(step + 1);
  }
  EXPECT_EQ(changes, 72);
  EXPECT_NEAR(dark, kSteps / 2, 72);
}

TEST(Chart, HasAWhiteRimAndSquaresInItsCorners) {
  const auto is_dark = [](double u, double v) { return brightness(painted({Material::chart}, upright(u, v)).albedo) < 1; };
  for (double at = -0.59; at < 0.6; at += 0.01) {
    EXPECT_FALSE(is_dark(at, 0.55));
    EXPECT_FALSE(is_dark(-0.55, at));
  }
  for (const double u : {-0.49, -0.41, 0.41, 0.49}) {
    for (const double v : {-0.49, -0.41, 0.41, 0.49}) {
      EXPECT_NE(is_dark(u, v), is_dark(u + (u < 0 ? 0.075 : -0.075), v)) << u << " " << v;
    }
  }
}

TEST(Board, HasItsLinesInTheMiddleWithinARim) {
  const auto is_ink = [](double u, double v) {
    const Vec3 colour = painted({Material::board, {}, &sign()}, upright(u, v)).albedo;
    const bool ink = length(colour - sign().ink) < 1e-9;
    EXPECT_TRUE(ink || length(colour - sign().ground) < 1e-9) << u << " " << v;
    return ink;
  };
  const double half = tool::Lettering("HI").width() * 0.25 / 2;
  EXPECT_TRUE(is_ink(-half, 0.2)) << "the left stroke of H";
  EXPECT_TRUE(is_ink(half, 0.2)) << "the I";
  EXPECT_FALSE(is_ink(half + 0.1, 0.2));
  EXPECT_TRUE(is_ink(0, -0.2125 + 0.125)) << "the top of O";
  EXPECT_FALSE(is_ink(0, -0.2125)) << "the inside of O";
  const double rim = 0.25 * (0.22 + 0.045);
  for (const double sign_of : {-1.0, 1.0}) {
    EXPECT_TRUE(is_ink(sign_of * (1 - rim), 0.1));
    EXPECT_TRUE(is_ink(0.3, sign_of * (0.5 - rim)));
    EXPECT_FALSE(is_ink(sign_of * 0.99, 0));
    EXPECT_FALSE(is_ink(0.3, sign_of * 0.49));
  }
}

// A third of a shutter is the gap between its slats, whatever part of them a sample covers.
TEST(Plaster, SlatsBlendIntoTheirMean) {
  const auto shutter = [](double v, double extent) {
    return painted({Material::plaster}, upright(0.95 - 0.6, v, extent)).albedo;
  };
  const Vec3 wide = shutter(1.2, 0.9);
  Vec3 sum;
  for (int n = 0; n < 900; ++n) sum = sum + shutter(0.75 + 0.001 * (n + 0.5), kPoint);
  EXPECT_NEAR(length(wide - sum * (1.0 / 900)), 0, 2e-3);
  const Vec3 slat{0.13, 0.27, 0.22}, gap{0.05, 0.11, 0.09};
  EXPECT_NEAR(length(wide - (slat * (2.0 / 3) + gap * (1.0 / 3))), 0, 1e-9);
}

TEST(Floor, SlabsTakeTurnsAndAMosaicLiesUnderTheCamera) {
  const auto mean = [](double u, double v) {
    double sum = 0;
    for (int n = 0; n < 100; ++n)
      sum += brightness(painted({Material::floor}, level(u + 0.04 * (n % 10) - 0.2, v + 0.04 * (n / 10) - 0.2)).albedo);
    return sum / 100;
  };
  double light = 0, dark = 0;
  for (int i = 4; i < 7; ++i) {
    for (int j = -2; j < 3; ++j) ((i + j) % 2 == 0 ? light : dark) += mean(0.6 * i, 0.6 * j) / 7.5;
  }
  EXPECT_GT(light, 1.2 * dark);
  const Vec3 inlay = painted({Material::floor}, level(0, 0.05)).albedo,
             ground = painted({Material::floor}, level(0.35, 0.2)).albedo;
  EXPECT_GT(length(inlay - ground), 0.01);
}

// Mortar lies around each brick; a sample over many bricks has as much of it as the wall.
TEST(Brick, HasItsShareOfMortar) {
  const double bare = (1 - 0.011 / 0.26) * (1 - 0.011 / 0.085);
  int mortar = 0, all = 0;
  for (int i = 0; i < 520; ++i) {
    for (int j = 0; j < 170; ++j, ++all) {  // two bricks along, two rows
      const Spot spot = upright(0.001 * (i + 0.5), 0.001 * (j + 0.5));
      const Vec3 colour = painted({Material::brick}, spot).albedo;
      mortar += colour.z > 0.7 * colour.x;
    }
  }
  EXPECT_NEAR(double(mortar) / all, 1 - bare, 0.01);
}

TEST(FlutedStone, TwentyFlutesTurnTheNormalAsideAndNeverUp) {
  int crossings = 0;
  double before = 0;
  for (int step = 0; step <= 3600; ++step) {
    const double angle = (step + 0.25) * 2 * pi / 3600;
    const Vec3 normal{std::sin(angle), 0, std::cos(angle)};
    const Surface surface = painted({Material::fluted_stone}, {normal * 0.2, normal, 0, 0, kPoint, kPoint});
    EXPECT_EQ(surface.normal.y, 0);
    const double aside = surface.normal.x * normal.z - surface.normal.z * normal.x;
    if (step > 0) crossings += (aside > 0) != (before > 0);
    before = aside;
  }
  EXPECT_EQ(crossings, 40);
}

}  // namespace
}  // namespace biseam::scene
