#include "ring/mesh_rows.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "camera/view.hpp"
#include "ring/mesh.hpp"
#include "ring/reference.hpp"
#include "support/cameras.hpp"
#include "support/isas.hpp"
#include "support/random_source.hpp"

namespace biseam::test {
namespace {

using namespace ring;

constexpr int kWidth = 1280, kHeight = 640;

// The nodes above every ninth column, in a row that may run through a pole.
struct Row {
  double y;  // luma
  std::vector<double> x, sines, cosines;
  NodeRow nodes;

  Row(double row, int count) : y(row) {
    for (int i = 0; i < count; ++i) {
      x.push_back(9.0 * i);
      const double longitude = (x.back() + 0.5) * 2 * kPi / kWidth - kPi;
      sines.push_back(std::sin(longitude));
      cosines.push_back(std::cos(longitude));
    }
    nodes = {sines.data(), cosines.data(), sine_cosine((y + 0.5) * kPi / kHeight - kPi / 2), count};
  }
};

std::vector<Turn> some_turns(RandomSource& random) {
  std::vector<Turn> turns = {{}, {0, 90, 0}, {90, 0, 0}};
  for (int i = 0; i < 3; ++i) {
    turns.push_back(
        {double(random.real_between(-180, 180)), double(random.real_between(-90, 90)), double(random.real_between(-180, 180))});
  }
  return turns;
}

class NodeRows : public testing::TestWithParam<Isa> {
 protected:
  RandomSource random_;
};

// To the nearest 1/65536 of a pixel where the lens sees; nowhere farther than positions may be.
TEST_P(NodeRows, LieOnTheExactPositionsInPictures) {
  LensNodeRow* const fill = kLensNodeRow.of(GetParam());
  if (fill == nullptr) GTEST_SKIP() << "no version of its own";
  const Camera camera = bent_pair();
  for (const Turn& turn : some_turns(random_)) {
    for (const double y : {-0.5, 100.0, 319.5, 639.5}) {
      for (const int count : {0, 1, 7, 8, 33, 142}) {
        const Row row(y, count);
        for (int k = 0; k < 2; ++k) {
          const Projector lens(camera, k);
          std::vector<std::int32_t> at_x(std::size_t(count) + 1, 77), at_y(std::size_t(count) + 1, 77);
          fill(row.nodes, lens, lens.to_picture() * rotation(turn), at_x.data(), at_y.data());
          for (std::size_t i = 0; i < std::size_t(count); ++i) {
            const Place exact = reference_place(camera, k, reference_direction({kWidth, kHeight, turn}, row.x[i], y));
            ASSERT_LE(std::abs(at_x[i]), kFarthest << kPositionBits);
            ASSERT_LE(std::abs(at_y[i]), kFarthest << kPositionBits);
            if (exact.angle > (camera.lens[k].fov / 2 + kBeyondFov - 0.01) * kDegree) continue;
            ASSERT_NEAR(exact.x * 65536, at_x[i], 0.6) << row.x[i];
            ASSERT_NEAR(exact.y * 65536, at_y[i], 0.6) << row.x[i];
          }
          EXPECT_EQ(77, at_x.back());
          EXPECT_EQ(77, at_y.back());
        }
      }
    }
  }
}

TEST_P(NodeRows, LieOnTheExactAnglesOfTheRing) {
  RingNodeRow* const fill = kRingNodeRow.of(GetParam());
  if (fill == nullptr) GTEST_SKIP() << "no version of its own";
  for (const Turn& turn : some_turns(random_)) {
    for (const double y : {-0.5, 100.0, 319.5, 639.5}) {
      for (const int count : {0, 1, 7, 8, 33, 142}) {
        const Row row(y, count);
        std::vector<std::int32_t> t(std::size_t(count) + 1, 77), b(std::size_t(count) + 1, 77);
        fill(row.nodes, rotation(turn), t.data(), b.data());
        for (std::size_t i = 0; i < std::size_t(count); ++i) {
          const RingPlace exact = reference_ring(reference_direction({kWidth, kHeight, turn}, row.x[i], y));
          ASSERT_NEAR(exact.b / (2 * kPi) * (1 << kTurnBits), b[i], 0.6) << row.x[i];
          if (std::fabs(exact.b) > 89 * kDegree) continue;  // near the lenses' axes t means nothing
          const double wanted = exact.t / (2 * kPi) * (1 << kTurnBits);
          ASSERT_NEAR(0, std::remainder(wanted - t[i], 1 << kTurnBits), 0.6) << row.x[i];
        }
        EXPECT_EQ(77, t.back());
        EXPECT_EQ(77, b.back());
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Isas, NodeRows, testing::ValuesIn(isas_here()), isa_name);

}  // namespace
}  // namespace biseam::test
