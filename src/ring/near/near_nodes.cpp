#include "ring/near/near_nodes.hpp"

#include <algorithm>

#include "base/loop_versions.hpp"
#include "camera/trigonometry.hpp"
#include "ring/mesh_rows.hpp"

namespace biseam::ring {

namespace {

// Every step is rounded on its own, so that the versions give the same bits.
BISEAM_LOOP void move_node_row(const Projector& projector, const int32_t* t, const int32_t* b, const int32_t* moves, int32_t* x,
                               int32_t* y, int count) noexcept {
  constexpr double kUnit = 2 * kPi / (1 << kTurnBits);
  const Projector lens = projector;
  const Matrix3 to_picture = lens.to_picture();
  BISEAM_TURNS_APART
  for (ptrdiff_t i = 0; i < count; ++i) {
    const SineCosine round = sine_cosine(t[i] * kUnit), across = sine_cosine((b[i] + moves[i]) * kUnit);
    const ImagePoint at =
        lens.image_of(to_picture * Vec3{across.cosine * round.cosine, across.cosine * round.sine, across.sine});
    x[i] = moves[i] == 0 ? x[i] : mesh_position(at.x);
    y[i] = moves[i] == 0 ? y[i] : mesh_position(at.y);
  }
}

constexpr int kFadeOneBits = 14;

// 1 in the ring, 0 from kNearFade beyond it on, as 1 - 3 u^2 + 2 u^3; in 2^-14.
int32_t fade_at(int32_t b, int32_t half_width) noexcept {
  const int32_t beyond = std::clamp((b < 0 ? -b : b) - half_width, 0, kNearFade);
  const int64_t u = beyond >> (kTurnBits - 4 - kFadeOneBits);
  return (1 << kFadeOneBits) - static_cast<int32_t>(u * u * ((3 << kFadeOneBits) - 2 * u) >> (2 * kFadeOneBits));
}

// In 1/2^kTurnBits of a turn.
int32_t move_at(const RingShape& ring, const Displacement& displacement, int32_t t, int32_t b) noexcept {
  const int32_t fade = fade_at(b, ring.half_width);
  if (fade == 0) return 0;
  const int64_t length = ring.strip.length;
  const int64_t place = (t & ((1 << kTurnBits) - 1)) * length;  // strip samples in 1/2^kTurnBits
  const int32_t* const here = displacement.values + (place >> kTurnBits);
  const int64_t past = (place >> (kTurnBits - 8)) & 255;
  const int64_t samples = here[0] * (256 - past) + here[1] * past;  // 1/2^24
  return static_cast<int32_t>(samples / length * fade >> kFadeOneBits);
}

}  // namespace

constinit const Variants<MoveNodeRow> kMoveNodeRow = loop_versions<move_node_row, MoveNodeRow>;

namespace {

// Positions of both lenses.
constexpr int kPlanes = 4;

size_t plane_bytes(const MeshShape& shape) noexcept { return (node_count(shape) * sizeof(int32_t) + 63) / 64 * 64; }

}  // namespace

size_t moved_mesh_bytes(const MeshShape& shape) noexcept { return kPlanes * plane_bytes(shape); }

Mesh carve_moved_mesh(const Mesh& mesh, void* block) noexcept {
  Mesh moved = mesh;
  char* next = static_cast<char*>(block);
  for (LensNodes& lens : moved.lens) {
    for (NodePlane* plane : {&lens.x, &lens.y}) {
      plane->values = reinterpret_cast<int32_t*>(next);
      next += plane_bytes(mesh.shape);
    }
  }
  return moved;
}

namespace {

// Nodes of a row one after the other.
struct NodeRun {
  ptrdiff_t first;
  int count;
};

// By how much lens 0 is moved at a run's nodes; out of the ring, where most of them are, not at all.
void find_moves(const RingShape& ring, const Displacement& displacement, const Mesh& mesh, const NodeRun& run,
                int32_t* moves) noexcept {
  for (int i = 0; i < run.count; ++i) {
    moves[i] = move_at(ring, displacement, mesh.t.values[run.first + i], mesh.b.values[run.first + i]);
  }
}

void copy_run(const LensNodes& from, const NodeRun& run, const LensNodes& to) noexcept {
  std::copy_n(from.x.values + run.first, run.count, to.x.values + run.first);
  std::copy_n(from.y.values + run.first, run.count, to.y.values + run.first);
}

// Of a run, what lies between nodes that stay where they are.
void move_lens(const Projector& lens, const Mesh& mesh, const NodeRun& run, const int32_t* moves,
               const LensNodes& to) noexcept {
  for (int begin = 0; begin < run.count;) {
    int end = begin;
    while (end < run.count && moves[end] != 0) ++end;
    const ptrdiff_t at = run.first + begin;
    if (end > begin) {
      kMoveNodeRow.best()(lens, mesh.t.values + at, mesh.b.values + at, moves + begin, to.x.values + at, to.y.values + at,
                          end - begin);
    }
    begin = end + 1;
  }
}

}  // namespace

void move_nodes(const RingShape& ring, const Displacement& displacement, const Projector* lenses, const Mesh& mesh, int row,
                const Mesh& moved) noexcept {
  constexpr int kRun = 256;
  const ptrdiff_t end = ptrdiff_t{row + 1} * mesh.shape.columns;
  for (ptrdiff_t first = ptrdiff_t{row} * mesh.shape.columns; first < end; first += kRun) {
    const NodeRun run{first, static_cast<int>(std::min<ptrdiff_t>(end - first, kRun))};
    int32_t moves[kRun];
    find_moves(ring, displacement, mesh, run, moves);
    for (int lens = 0; lens < 2; ++lens) {
      copy_run(mesh.lens[lens], run, moved.lens[lens]);
      move_lens(lenses[lens], mesh, run, moves, moved.lens[lens]);
      for (int i = 0; i < run.count; ++i) moves[i] = -moves[i];
    }
  }
}

}  // namespace biseam::ring
