#include "ring/mesh_rows.hpp"

#include "base/loop_versions.hpp"
#include "ring/mesh.hpp"

namespace biseam::ring {

namespace {

inline std::int32_t turn_of(double angle) noexcept { return mesh_rounded(angle * ((1 << kTurnBits) / (2 * kPi))); }

inline Vec3 direction(const NodeRow& row, std::ptrdiff_t i) noexcept {
  return {row.latitude.cosine * row.sines[i], row.latitude.sine, row.latitude.cosine * row.cosines[i]};
}

// Every step is rounded on its own, so that the versions give the same bits.
BISEAM_LOOP void lens_nodes(const NodeRow& nodes, const Projector& projector, const Matrix3& matrix, std::int32_t* x,
                            std::int32_t* y) noexcept {
  const NodeRow row = nodes;
  const Projector lens = projector;
  const Matrix3 to_picture = matrix;
  BISEAM_TURNS_APART
  for (std::ptrdiff_t i = 0; i < row.count; ++i) {
    const ImagePoint at = lens.image_of(to_picture * direction(row, i));
    x[i] = mesh_position(at.x);
    y[i] = mesh_position(at.y);
  }
}

BISEAM_LOOP void ring_nodes(const NodeRow& nodes, const Matrix3& matrix, std::int32_t* t, std::int32_t* b) noexcept {
  const NodeRow row = nodes;
  const Matrix3 to_world = matrix;
  BISEAM_TURNS_APART
  for (std::ptrdiff_t i = 0; i < row.count; ++i) {
    const Vec3 d = to_world * direction(row, i);
    t[i] = turn_of(arctangent(d.y, d.x));
    b[i] = turn_of(arctangent(d.z, std::sqrt(d.x * d.x + d.y * d.y)));
  }
}

}  // namespace

constinit const Variants<LensNodeRow> kLensNodeRow = loop_versions<lens_nodes, LensNodeRow>;
constinit const Variants<RingNodeRow> kRingNodeRow = loop_versions<ring_nodes, RingNodeRow>;

}  // namespace biseam::ring
