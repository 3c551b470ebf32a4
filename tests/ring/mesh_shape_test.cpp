#include "ring/mesh_shape.hpp"

#include <gtest/gtest.h>

#include "ring/mesh.hpp"
#include "support/cameras.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

TEST(MeshShape, IsWideForLargePanoramas) {
  EXPECT_EQ(6, mesh_shape(scaled_camera(city_square(), 960), 1920, 960).spacing_bits);
  EXPECT_EQ(5, mesh_shape(scaled_camera(city_square(), 960), 1920, 960, kMovedSpacing).spacing_bits);
  EXPECT_EQ(6, mesh_shape(scaled_camera(city_square(), 1920), 3840, 1920, kMovedSpacing).spacing_bits);
  EXPECT_EQ(6, mesh_shape(scaled_camera(city_square(), 3840), 7680, 3840).spacing_bits);
}

// Three nodes beyond every position, those 8 samples past the end included, and the memory that large panoramas may take.
TEST(MeshShape, ReachesBeyondEveryPosition) {
  RandomSource random;
  for (int i = 0; i < 3000; ++i) {
    const int width = 2 * random.between(32, 8192), height = 2 * random.between(16, 4096);
    const MeshShape s = mesh_shape(scaled_camera(bent_pair(), random.between(200, 8000)), width, height);
    ASSERT_GE(s.spacing_bits, 0);
    ASSERT_LE(s.spacing_bits, kLargestSpacingBits);
    const int last_x = (2 * width + 16) >> s.spacing_bits, last_y = (2 * height + 16) >> s.spacing_bits;
    ASSERT_EQ(last_x + 3, s.columns - kNodesBefore - 1);
    ASSERT_EQ(last_y + 3, s.rows - kNodesBefore - 1);
  }
  EXPECT_LT(mesh_bytes(mesh_shape(scaled_camera(bent_pair(), 3840), 7680, 3840)), 1u << 20);
  EXPECT_LT(mesh_bytes(mesh_shape(scaled_camera(bent_pair(), 1920), 3840, 1920)), 1u << 18);
}

}  // namespace
}  // namespace biseam::test
