#include "calibrate/upright.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "calibrate/vectors.hpp"
#include "tool/calibrate/matches.hpp"

namespace biseam::calibrate {
namespace {

constexpr Vec3 kSides[4] = {{0, 1, 0}, {1, 0, 0}, {0, -1, 0}, {-1, 0, 0}};

Vec3 quarter_to_below(const Vec3& side, const Vec3& v) {
  return {side.y * v.x - side.x * v.y, side.x * v.x + side.y * v.y, v.z};
}

void expect_same(const Vec3& a, const Vec3& b) {
  EXPECT_NEAR(a.x, b.x, 1e-9);
  EXPECT_NEAR(a.y, b.y, 1e-9);
  EXPECT_NEAR(a.z, b.z, 1e-9);
}

// Light of a place that is darker to one side, as the camera records it.
Pair darker_towards(const Vec3& side, double by, const Camera& camera) {
  Pair pair;
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = camera.lens[k];
    const Projector projector(camera, k);
    const double edge = radius(lens, lens.fov / 2 * kDegree);
    pair.lens[k] = cv::Mat1b(lens.height, lens.width, static_cast<unsigned char>(0));
    for (int y = 0; y < lens.height; ++y) {
      for (int x = 0; x < lens.width; ++x) {
        if (std::hypot(x - lens.cx, y - lens.cy) > edge) continue;
        pair.lens[k](y, x) = cv::saturate_cast<unsigned char>(120 - by * dot(projector.unproject(x, y), side));
      }
    }
  }
  return pair;
}

TEST(LowerSide, IsFoundHoweverTheLensesAreMounted) {
  for (const int first : {0, 90, 180, 270}) {
    for (const int second : {0, 90, 180, 270}) {
      Camera camera = some_camera(200);
      camera.lens[0].mount = first;
      camera.lens[1].mount = second;
      Circle circles[2];
      for (int k = 0; k < 2; ++k) {
        circles[k] = {camera.lens[k].cx, camera.lens[k].cy, radius(camera.lens[k], 100 * kDegree), 0, 0};
      }
      const Frame frame{200, 200, {first, second}};
      for (const Vec3& side : kSides) {
        // A little towards another side as well.
        const Vec3 towards = unit(side + 0.4 * Vec3{side.y, -side.x, 0});
        expect_same(lower_side({darker_towards(towards, 50, camera)}, circles, frame), side);
      }
    }
  }
}

// Pictures of several places count together; one that is a little darker somewhere says nothing.
TEST(LowerSide, TakesMoreThanATraceOfLight) {
  const Camera camera = some_camera(200);
  Circle circles[2];
  for (int k = 0; k < 2; ++k) {
    circles[k] = {camera.lens[k].cx, camera.lens[k].cy, radius(camera.lens[k], 100 * kDegree), 0, 0};
  }
  const Frame frame{200, 200, {0, 0}};
  expect_same(lower_side({darker_towards({1, 0, 0}, 5, camera)}, circles, frame), {0, 0, 0});
  expect_same(lower_side({darker_towards({1, 0, 0}, 60, camera), darker_towards({-1, 0, 0}, 60, camera)}, circles, frame),
              {0, 0, 0});
  expect_same(lower_side({darker_towards({1, 0, 0}, 20, camera), darker_towards({0, 1, 0}, 60, camera)}, circles, frame),
              {0, 1, 0});
}

// Rocks under an evenly bright sky.
TEST(LowerSide, ShowsTheFinerDetail) {
  const Camera camera = some_camera(200);
  Circle circles[2];
  for (int k = 0; k < 2; ++k) {
    circles[k] = {camera.lens[k].cx, camera.lens[k].cy, radius(camera.lens[k], 100 * kDegree), 0, 0};
  }
  for (const Vec3& side : kSides) {
    Pair pair = darker_towards({0, 0, 0}, 0, camera);
    for (int k = 0; k < 2; ++k) {
      const Projector projector(camera, k);
      for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 200; ++x) {
          unsigned char& light = pair.lens[k](y, x);
          if (light > 0 && dot(projector.unproject(x, y), side) > 0)
            light = static_cast<unsigned char>(100 + 40 * hashed(x, y, k));
        }
      }
    }
    expect_same(lower_side({pair}, circles, {200, 200, {0, 0}}), side);
  }
}

// A camera whose dark side is this one, with a ground there or without.
struct Case {
  Problem problem;
  Explanations found;

  Case(const Values& values, const Vec3& down, const Vec3& ground) {
    problem.frame = kFrame;
    problem.pairs = 2;
    problem.prior.down = down;
    found.still.values = found.ground.values = values;
    found.ground.values[kRoll] += 0.1;
    found.still.grounds.assign(2, {0, 0, 0});
    found.ground.grounds = {0.8 * ground, 1.2 * ground};
    found.still.cost = dot(ground, ground) > 0 ? 1000 : 0;  // else the ground explains no more than nothing does
  }
};

// The whole world of both lenses goes with the dark side: each lens sees the same things in the same places of its picture, and
// in directions that are turned by as many quarters.
TEST(SetUpright, TurnsTheWorldSoThatTheDarkSideIsBelow) {
  for (const Vec3& down : kSides) {
    for (const Vec3& ground : {Vec3{0, 0, 0}, 8.0 * down}) {
      for (const Parameter alone : {kYaw, kPitch}) {
        Values values = some_values();
        values[alone] = 0;  // both at once don't take the same order after a quarter
        Case turned(values, down, ground);
        const Case before = turned;
        set_upright(turned.problem, turned.found);
        expect_same(turned.problem.prior.down, {0, 1, 0});
        for (Solution Explanations::*of : {&Explanations::still, &Explanations::ground}) {
          const Solution &was = before.found.*of, &is = turned.found.*of;
          const Camera from = camera_of(was.values, before.problem.frame), to = camera_of(is.values, turned.problem.frame);
          for (int k = 0; k < 2; ++k) {
            const Projector old_lens(from, k), new_lens(to, k);
            for (int i = 0; i < 9; ++i) {
              const double x = 160 + 320 * (i % 3), y = 160 + 320 * (i / 3);
              expect_same(new_lens.unproject(x, y), quarter_to_below(down, old_lens.unproject(x, y)));
            }
          }
          for (std::size_t pair = 0; pair < 2; ++pair) {
            expect_same(is.grounds[pair], quarter_to_below(down, was.grounds[pair]));
          }
        }
      }
    }
  }
}

void expect_untouched(const Vec3& down, const Vec3& ground) {
  Case given(some_values(), down, ground);
  const Case before = given;
  set_upright(given.problem, given.found);
  expect_same(given.problem.prior.down, down);
  EXPECT_EQ(given.problem.frame.mount[0], before.problem.frame.mount[0]);
  EXPECT_EQ(given.problem.frame.mount[1], before.problem.frame.mount[1]);
  EXPECT_EQ(given.found.still.values, before.found.still.values);
  EXPECT_EQ(given.found.ground.values, before.found.ground.values);
}

TEST(SetUpright, LeavesTheCameraAsItIsWhereNothingIsKnown) { expect_untouched({0, 0, 0}, {0, 0, 0}); }

// A low sun, or a dark wall: the ground is seen elsewhere.
TEST(SetUpright, LeavesTheCameraAsItIsWhereTheGroundIsNotTheDarkSide) {
  expect_untouched({1, 0, 0}, {0, 8, 0});
  expect_untouched({0, -1, 0}, {8, 0, 0});
}

}  // namespace
}  // namespace biseam::calibrate
