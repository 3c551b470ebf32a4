#include "ring/mesh.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "camera/trigonometry.hpp"
#include "ring/mesh_fixture.hpp"
#include "ring/reference.hpp"
#include "support/cameras.hpp"
#include "support/hash.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

TEST(Mesh, NodesLieOnTheExactPositions) {
  RandomSource random;
  const Camera camera = bent_pair();
  OwnMesh mesh(camera, 1280, 640);
  for (int i = 0; i < 8; ++i) {
    const View view{
        1280,
        640,
        {double(random.real_between(-180, 180)), double(random.real_between(-90, 90)), double(random.real_between(-180, 180))}};
    mesh.build(view.turn);
    const MeshShape& s = mesh->shape;
    const double spacing = (1 << s.spacing_bits) / 2.0;
    for (int row = 0; row < s.rows; ++row) {
      for (int column = 0; column < s.columns; ++column) {
        const Vec3 d = reference_direction(view, (column - kNodesBefore) * spacing, (row - kNodesBefore) * spacing);
        const std::size_t at = std::size_t(row) * std::size_t(s.columns) + std::size_t(column);
        for (int k = 0; k < 2; ++k) {
          const Place exact = reference_place(camera, k, d);
          const double x = mesh->lens[k].x.values[at] / 65536.0, y = mesh->lens[k].y.values[at] / 65536.0;
          ASSERT_LE(std::fabs(x), kFarthest);
          ASSERT_LE(std::fabs(y), kFarthest);
          if (exact.angle > (camera.lens[k].fov / 2 + kBeyondFov - 0.01) * kDegree) continue;
          ASSERT_NEAR(exact.x, x, 0.6 / 65536);
          ASSERT_NEAR(exact.y, y, 0.6 / 65536);
        }
        const RingPlace ring = reference_ring(d);
        ASSERT_NEAR(ring.b / (2 * kPi) * (1 << kTurnBits), mesh->b.values[at], 0.6);
        if (std::fabs(ring.b) > 89 * kDegree) continue;
        const double t = ring.t / (2 * kPi) * (1 << kTurnBits);
        ASSERT_NEAR(0, std::remainder(t - mesh->t.values[at], 1 << kTurnBits), 0.6);
      }
    }
  }
}

TEST(Mesh, HasTheSameBitsOnEveryHost) {
  Hash hash;
  OwnMesh mesh(bent_pair(), 1920, 960);
  for (const Turn& turn : {Turn{}, Turn{0, 90, 0}, Turn{-77.5, 12.25, 163}}) {
    mesh.build(turn);
    const std::size_t count = node_count(mesh->shape);
    for (const NodePlane& plane : {mesh->lens[0].x, mesh->lens[0].y, mesh->lens[1].x, mesh->lens[1].y, mesh->t, mesh->b}) {
      for (std::size_t i = 0; i < count; ++i) hash.add(plane.values[i]);
    }
  }
  EXPECT_EQ(0x6ed9c685777daeacu, hash.value());
}

// At the farthest that rules allow, and with positions that would leave the integers.
TEST(Mesh, HugeRadiiAndCentresAreHeld) {
  Camera camera = city_square();
  for (Lens& lens : camera.lens) {
    lens.width = lens.height = 16384;
    lens.cx = 100000;
    lens.cy = -100000;
    lens.p = 9000;
    lens.k[2] = 0.5;
  }
  OwnMesh mesh(camera, 128, 64);
  mesh.build({10, 20, 30});
  int held = 0;
  for (std::size_t i = 0; i < node_count(mesh->shape); ++i) {
    ASSERT_LE(std::abs(mesh->lens[0].x.values[i]), kFarthest * 65536);
    ASSERT_LE(std::abs(mesh->lens[1].y.values[i]), kFarthest * 65536);
    held += mesh->lens[0].x.values[i] == kFarthest * 65536;
  }
  EXPECT_GT(held, 0);
}

}  // namespace
}  // namespace biseam::test
