#include "ring/mesh.hpp"

#include "ring/mesh_rows.hpp"

namespace biseam::ring {

namespace {

// Of a row of doubles or a plane of nodes; every piece starts on a cache line.
std::size_t piece_bytes(std::size_t bytes) noexcept { return (bytes + 63) / 64 * 64; }

std::size_t plane_bytes(const MeshShape& shape) noexcept { return piece_bytes(node_count(shape) * sizeof(std::int32_t)); }
std::size_t angle_bytes(const MeshShape& shape) noexcept {
  return piece_bytes(2 * static_cast<std::size_t>(shape.columns) * sizeof(double));
}

// Of node i.
double node_position(const MeshShape& shape, int i) noexcept { return i * (0.5 * (1 << shape.spacing_bits)); }

}  // namespace

std::size_t mesh_bytes(const MeshShape& shape) noexcept { return 6 * plane_bytes(shape) + angle_bytes(shape); }

Mesh carve_mesh(const MeshShape& shape, void* block) noexcept {
  char* next = static_cast<char*>(block);
  const auto take = [&](std::size_t bytes) {
    char* piece = next;
    next += bytes;
    return static_cast<void*>(piece);
  };
  Mesh mesh;
  mesh.shape = shape;
  mesh.angles = static_cast<double*>(take(angle_bytes(shape)));
  for (NodePlane* plane : {&mesh.lens[0].x, &mesh.lens[0].y, &mesh.lens[1].x, &mesh.lens[1].y, &mesh.t, &mesh.b}) {
    plane->values = static_cast<std::int32_t*>(take(plane_bytes(shape)));
  }
  return mesh;
}

void build_mesh(const Mesh& mesh, const Projector& lens0, const Projector& lens1, const Turn& turn) noexcept {
  const MeshShape& shape = mesh.shape;
  const View view{shape.width, shape.height, turn};
  double *sines = mesh.angles, *cosines = mesh.angles + shape.columns;
  for (int i = 0; i < shape.columns; ++i) {
    const SineCosine longitude = sine_cosine(longitude_of(view, node_position(shape, i - kNodesBefore)));
    sines[i] = longitude.sine;
    cosines[i] = longitude.cosine;
  }
  const Matrix3 to_world = rotation(turn);
  const Matrix3 to_picture[2] = {lens0.to_picture() * to_world, lens1.to_picture() * to_world};
  LensNodeRow* const lens_row = kLensNodeRow.best();
  RingNodeRow* const ring_row = kRingNodeRow.best();
  for (int j = 0; j < shape.rows; ++j) {
    const NodeRow row = {sines, cosines, sine_cosine(latitude_of(view, node_position(shape, j - kNodesBefore))), shape.columns};
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(j) * shape.columns;
    lens_row(row, lens0, to_picture[0], mesh.lens[0].x.values + at, mesh.lens[0].y.values + at);
    lens_row(row, lens1, to_picture[1], mesh.lens[1].x.values + at, mesh.lens[1].y.values + at);
    ring_row(row, to_world, mesh.t.values + at, mesh.b.values + at);
  }
}

}  // namespace biseam::ring
