#include "ring/ring_shape.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "camera/rules.hpp"
#include "ring/mesh.hpp"
#include "ring/reference.hpp"
#include "support/cameras.hpp"

namespace biseam::test {
namespace {

using ring::ring_shape;
using ring::RingShape;

Camera pair_of(double fov) { return {.lens = {usual_lens(960, 960, fov), usual_lens(960, 960, fov)}}; }

double pitch(const RingShape& ring) { return 2 * kPi / ring.strip.length; }

// From the narrowest ring to the widest, from thumbnails to the largest panorama.
TEST(RingShape, StaysWithinWhatBothLensesSeeAndWhatStripsCanBe) {
  for (const Camera& camera : {pair_of(183), pair_of(185), pair_of(195), pair_of(280), city_square(), bent_pair()}) {
    ASSERT_FALSE(check_camera(camera)) << check_camera(camera).text;
    for (const int width : {64, 66, 256, 1000, 1920, 3840, 7680, 16384}) {
      const RingShape ring = ring_shape(camera, width);
      EXPECT_EQ(ring.strip.length % 16, 0);
      EXPECT_GE(ring.strip.length, std::min(width / 4 - 8, ring::kMaxStripLength));
      EXPECT_LE(ring.strip.length, ring::kMaxStripLength);
      EXPECT_GE(ring.strip.width, 9);
      EXPECT_LE(ring.strip.width, ring::kMaxStripWidth);
      const double reach = 0.5 * (ring.strip.width - 1) * pitch(ring);
      EXPECT_LE(reach, overlap(camera) + 1e-9);
      EXPECT_LE(reach, 10.5 * kDegree + 1e-9);
      EXPECT_GT(reach + 0.51 * pitch(ring), std::min(overlap(camera), 10.5 * kDegree)) << "as wide as can be";
      // The outermost samples are in, by less than 2 units.
      EXPECT_NEAR(ring.half_width, reach / (2 * kPi) * (1 << ring::kTurnBits), 1.001);
      EXPECT_GE(ring.half_width, reach / (2 * kPi) * (1 << ring::kTurnBits));
    }
  }
}

TEST(RingShape, TheRampIsEightColumnsOfThePanorama) {
  for (const int width : {960, 1920, 3840, 7680, 16384}) {
    const RingShape ring = ring_shape(pair_of(210), width);
    EXPECT_NEAR(ring.ramp * pitch(ring) / 65536, 8 * 2 * kPi / width, 1e-4 * pitch(ring)) << width;
  }
  for (const int width : {64, 256}) {  // but no wider than a quarter of the strip
    const RingShape ring = ring_shape(pair_of(210), width);
    EXPECT_LE(ring.ramp, ring.strip.width * 16384);
    EXPECT_GE(ring.ramp, 4096);
  }
}

TEST(RingShape, StripSamplesLieWhereTheirAnglesAre) {
  const Camera camera = bent_pair();
  const RingShape ring = ring_shape(camera, 640);
  const auto count = std::size_t(ring::strip_samples(ring.strip));
  for (int lens = 0; lens < 2; ++lens) {
    std::vector<int32_t> x(count), y(count);
    ring::fill_strip_positions(Projector(camera, lens), ring.strip, x.data(), y.data());
    std::size_t i = 0;
    for (int row = 0; row < ring.strip.length; ++row) {
      for (int column = 0; column < ring.strip.width; ++column, ++i) {
        const double t = row * pitch(ring), b = (column - 0.5 * (ring.strip.width - 1)) * pitch(ring);
        const Vec3 direction = {std::cos(b) * std::cos(t), std::cos(b) * std::sin(t), std::sin(b)};
        const Place place = reference_place(camera, lens, direction);
        ASSERT_NEAR(place.x * 65536, x[i], 0.501) << row << ", " << column;
        ASSERT_NEAR(place.y * 65536, y[i], 0.501) << row << ", " << column;
        // What both lenses see.
        ASSERT_LE(place.angle, camera.lens[lens].fov / 2 * kDegree + 1e-9);
        ASSERT_GE(place.x, -0.5 - 1e-9);
        ASSERT_LE(place.x, camera.lens[lens].width - 0.5 + 1e-9);
        ASSERT_GE(place.y, -0.5 - 1e-9);
        ASSERT_LE(place.y, camera.lens[lens].height - 0.5 + 1e-9);
      }
    }
  }
}

}  // namespace
}  // namespace biseam::test
