#pragma once

#include <cstdlib>
#include <memory>

#include "ring/positions.hpp"

namespace biseam::test {

// A mesh on a block of its own, built for a turn of the view.
class OwnMesh {
 public:
  OwnMesh(const Camera& camera, int width, int height) : lens0_(camera, 0), lens1_(camera, 1) {
    const ring::MeshShape shape = ring::mesh_shape(camera, width, height);
    block_.reset(std::aligned_alloc(64, ring::mesh_bytes(shape)));
    mesh_ = ring::carve_mesh(shape, block_.get());
  }

  void build(const Turn& turn) { ring::build_mesh(mesh_, lens0_, lens1_, turn); }
  const ring::Mesh& operator*() const { return mesh_; }
  const ring::Mesh* operator->() const { return &mesh_; }

 private:
  struct Free {
    void operator()(void* block) const { std::free(block); }
  };
  Projector lens0_, lens1_;
  std::unique_ptr<void, Free> block_;
  ring::Mesh mesh_;
};

}  // namespace biseam::test
