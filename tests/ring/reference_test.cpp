// What the reference itself must do, on pictures whose panorama is known.
#include "ring/reference.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "support/cameras.hpp"

namespace biseam::test {
namespace {

ReferencePlane flat(int width, int height, double value) {
  ReferencePlane plane;
  plane.width = width;
  plane.height = height;
  plane.samples.assign(std::size_t(width) * std::size_t(height), value);
  return plane;
}

TEST(Reference, KernelsKeepWhatTheyShould) {
  ReferencePlane ramp = flat(40, 30, 0);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 40; ++x) ramp.samples[std::size_t(y * 40 + x)] = 3 * x - 2 * y;
  }
  for (const Kernel kernel : {Kernel::bilinear, Kernel::cubic, Kernel::spline36}) {
    for (const double x : {10.0, 10.25, 17.875}) {
      EXPECT_NEAR(3 * x - 2 * 12.5, reference_sample(ramp, kernel, x, 12.5, {}),
                  0.02);  // spline36 is within 1 in 300 of a ramp
      EXPECT_NEAR(7, reference_sample(flat(9, 9, 7), kernel, x, -3.2, {1.3, 2.6}), 1e-12);
    }
    EXPECT_NEAR(ramp.at(12, 8), reference_sample(ramp, kernel, 12, 8, {}), 1e-12);  // on a sample it is the sample
    EXPECT_NEAR(ramp.at(0, 0), reference_sample(ramp, kernel, -50, -50, {}), 1e-12);
  }
}

TEST(Reference, OutsideTheRingOnlyOneLensCounts) {
  ReferenceFrame frame;
  frame.camera = city_square();
  frame.view = {128, 64, {20, 30, 10}};
  frame.half_width = 0.07;
  int inside = 0;
  frame.blend = [&](const RingSample& s) {
    ++inside;
    EXPECT_LE(std::fabs(s.place.b), 0.07);
    EXPECT_NEAR(60, s.sample(0), 1e-9);
    return 0.5 * (s.sample(0) + s.sample(1));
  };
  ReferencePlane grid;
  grid.width = 128;
  grid.height = 64;
  const auto out = reference_panorama(frame, {flat(960, 960, 60), flat(960, 960, 200)}, grid);
  int counted[3] = {};
  for (std::size_t i = 0; i < out.size(); ++i) {
    const double b = reference_ring(reference_direction(frame.view, double(i % 128), double(i / 128))).b;
    const double expected = std::fabs(b) <= 0.07 ? 130 : b > 0 ? 200 : 60;
    ASSERT_NEAR(expected, out[i], 1e-9);
    ++counted[expected == 130 ? 2 : expected == 200];
  }
  EXPECT_EQ(inside, counted[2]);
  EXPECT_GT(counted[0], 2000);
  EXPECT_GT(counted[1], 2000);
  EXPECT_GT(inside, 100);
}

// A picture of a smooth function of the direction gives that function back, at every siting.
TEST(Reference, APanoramaShowsWhatThePicturesWereMadeOf) {
  const auto scene = [](const Vec3& d) { return 100 + 40 * d.x + 30 * d.y * d.z + 20 * d.z; };
  ReferenceFrame frame;
  frame.camera = city_square();
  for (Lens& lens : frame.camera.lens) {
    lens = usual_lens(300, 300, 200);
    lens.turn = {1, -2, 30};
  }
  frame.view = {240, 120, {75, -35, 140}};
  frame.blend = [](const RingSample& s) { return s.sample(1); };
  frame.half_width = 0.05;
  ReferencePlane pictures[2], grid = flat(120, 60, 0);
  grid.sub_x = grid.sub_y = 2;
  grid.offset_y = 0.5;
  for (int k = 0; k < 2; ++k) {
    ReferencePlane& p = pictures[k] = flat(150, 300, 0);
    p.sub_x = 2;
    const Lens& lens = frame.camera.lens[k];
    for (int y = 0; y < 300; ++y) {
      for (int x = 0; x < 150; ++x) {
        // The ray by inversion of the equidistant picture and its turn.
        const double u = (2 * x - lens.cx) / lens.p, v = (y - lens.cy) / lens.p, a = std::hypot(u, v);
        const double s = a == 0 ? 1 : std::sin(a) / a;
        Vec3 d = {s * u, s * v, std::cos(a)};
        d = rotation(lens.turn) * d;
        if (k == 0) d = {-d.x, d.y, -d.z};
        p.samples[std::size_t(y * 150 + x)] = scene(d);
      }
    }
  }
  const auto out = reference_panorama(frame, pictures, grid);
  double worst = 0;
  for (int y = 0; y < 60; ++y) {
    for (int x = 0; x < 120; ++x) {
      const Vec3 d = reference_direction(frame.view, 2.0 * x, 2.0 * y + 0.5);
      worst = std::fmax(worst, std::fabs(scene(d) - out[std::size_t(y * 120 + x)]));
    }
  }
  EXPECT_LT(worst, 0.1);
}

}  // namespace
}  // namespace biseam::test
