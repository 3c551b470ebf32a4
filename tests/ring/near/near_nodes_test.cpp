#include "ring/near/near_nodes.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

#include "camera/trigonometry.hpp"
#include "ring/mesh_fixture.hpp"
#include "support/cameras.hpp"
#include "support/hash.hpp"

namespace biseam::test {
namespace {

using namespace ring;

// A mesh and the one in which views are moved, by up to six strip samples.
struct Own {
  Camera camera = bent_pair();
  RingShape ring = ring_shape(camera, 1920);
  Projector lenses[2] = {Projector(camera, 0), Projector(camera, 1)};
  OwnMesh mesh{camera, 1920, 960};
  std::vector<int32_t> block;
  Mesh moved;
  std::unique_ptr<Displacement> displacement = std::make_unique<Displacement>();

  explicit Own(const Turn& turn) {
    mesh.build(turn);
    block.resize(moved_mesh_bytes(mesh->shape) / sizeof(int32_t));
    moved = carve_moved_mesh(*mesh, block.data());
    displacement->any = true;
    const int length = ring.strip.length;
    for (int t = 0; t <= length; ++t) displacement->values[t] = static_cast<int32_t>(samples(t) * 65536);
    for (int row = 0; row < mesh->shape.rows; ++row) move_nodes(ring, *displacement, lenses, *mesh, row, moved);
  }
  // None in a third of the ring.
  double samples(double t) const { return std::max(0.0, 3 * (std::sin(t * 2 * kPi / ring.strip.length) + 0.5)); }
};

TEST(MoveNodes, MovesBothLensesHalfWaysAndLessBeyondTheRing) {
  for (const Turn& turn : {Turn{}, Turn{20, 70, -40}}) {
    const Own own(turn);
    const int length = own.ring.strip.length;
    const double turns = 1 << kTurnBits, half_width = own.ring.half_width / turns * 360;
    int within = 0, fading = 0, still = 0;
    for (std::size_t i = 0; i < node_count(own.mesh->shape); ++i) {
      const double t = (own.mesh->t.values[i] & ((1 << kTurnBits) - 1)) / turns, b = own.mesh->b.values[i] / turns * 360;
      const double u = std::clamp((std::abs(b) - half_width) / 22.5, 0.0, 1.0), fade = 1 - u * u * (3 - 2 * u);
      const double move = own.samples(t * length) * 360 / length * fade;
      (fade == 1 ? within : fade == 0 ? still : fading) += 1;
      for (int lens = 0; lens < 2; ++lens) {
        const double round = 2 * kPi * t, across = (b + (lens == 0 ? move : -move)) * kDegree;
        const Vec3 d{std::cos(across) * std::cos(round), std::cos(across) * std::sin(round), std::sin(across)};
        const ImagePoint exact = own.lenses[lens].project(d);
        const double x = own.moved.lens[lens].x.values[i] / 65536.0, y = own.moved.lens[lens].y.values[i] / 65536.0;
        if (exact.angle > (own.camera.lens[lens].fov / 2 + 15) * kDegree) continue;
        if (std::abs(b) < 70) {
          ASSERT_NEAR(x, exact.x, 0.01) << b;
          ASSERT_NEAR(y, exact.y, 0.01) << b;
        }
        if (move > 0.001) continue;
        ASSERT_NEAR(own.moved.lens[lens].x.values[i], own.mesh->lens[lens].x.values[i], move == 0 ? 0 : 600) << b;
        ASSERT_NEAR(own.moved.lens[lens].y.values[i], own.mesh->lens[lens].y.values[i], move == 0 ? 0 : 600) << b;
      }
    }
    EXPECT_GT(within, 100);
    EXPECT_GT(fading, 100);
    EXPECT_GT(still, 100);
    EXPECT_EQ(own.moved.t.values, own.mesh->t.values) << "angles are shared";
  }
}

TEST(MoveNodes, HasTheSameBitsOnEveryHost) {
  Hash hash;
  for (const Turn& turn : {Turn{}, Turn{-77.5, 12.25, 163}}) {
    Own own(turn);
    for (int t = 0; t <= own.ring.strip.length; ++t) own.displacement->values[t] = (t * 7919) % 300000;
    for (int row = 0; row < own.mesh->shape.rows; ++row) {
      move_nodes(own.ring, *own.displacement, own.lenses, *own.mesh, row, own.moved);
    }
    for (const LensNodes& lens : own.moved.lens) {
      for (const NodePlane& plane : {lens.x, lens.y}) {
        for (std::size_t i = 0; i < node_count(own.mesh->shape); ++i) hash.add(plane.values[i]);
      }
    }
  }
  EXPECT_EQ(hash.value(), 8300439454021162660u);
}

}  // namespace
}  // namespace biseam::test
