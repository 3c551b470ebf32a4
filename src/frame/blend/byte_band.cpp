#include "frame/blend/byte_band.hpp"

#include <cstddef>
#include <cstdint>

#include "base/threads.hpp"
#include "frame/blend/blend_rows.hpp"
#include "frame/blend/collapse.hpp"
#include "frame/blend/reduction.hpp"
#include "frame/blend/workspace.hpp"
#include "stages/blend/pyramid.hpp"

namespace biseam {

namespace {

// Reductions of exact halves leave sources of two pixels alone.
bool is_left_alone(int width, int height) { return width % 2 == 0 && height % 2 == 0 && (width == 2 || height == 2); }

void reduce_from(const Workspace& workspace, Pyramids pyramid, int first) {
  for (int k = first; k < workspace.level_count(); ++k) {
    reduce_level(workspace.level(pyramid, k), workspace.level(pyramid, k + 1), workspace.sums(pyramid));
  }
}

// Fills a source's Gaussian pyramid from its level 0.
struct Reduction {
  const Workspace* workspace;
  Pyramids pyramid;
};

void* run_reduction(void* task) {
  const auto [workspace, pyramid] = *static_cast<const Reduction*>(task);
  reduce_from(*workspace, pyramid, 0);
  return nullptr;
}

void reduce_sources(const Workspace& workspace) {
  Reduction reductions[] = {{&workspace, kSource1}, {&workspace, kSource2}};
  const ThreadTask tasks[] = {{run_reduction, &reductions[0]}, {run_reduction, &reductions[1]}};
  run_together(tasks, 2);
}

// False where a weight is out of range.
bool reduce_weights(const Workspace& workspace, const BlendImage& mask) {
  if (!narrow_and_reduce(mask, BISEAM_WEIGHT_ONE, workspace.level(kMask, 0), workspace.level(kMask, 1), workspace.sums(kMask)))
    return false;
  reduce_from(workspace, kMask, 1);
  return true;
}

void mix_tops(const Workspace& workspace) {
  const int top = workspace.level_count();
  const ByteImage source1 = workspace.level(kSource1, top), source2 = workspace.level(kSource2, top);
  const ByteImage mask = workspace.level(kMask, top);
  const BlendImage& out = workspace.blended(top);
  for (int y = 0; y < out.height; ++y) {
    kMixByteRow.best()(source1.row(y), source2.row(y), mask.row(y), out.data[0] + ptrdiff_t{y} * out.stride, out.stride);
  }
}

MixedLevel mixed_level(const Workspace& workspace, int k) {
  return {workspace.level(kSource1, k),     workspace.level(kSource2, k),     workspace.level(kMask, k),
          workspace.level(kSource1, k + 1), workspace.level(kSource2, k + 1), &workspace.blended(k + 1)};
}

void collapse_levels(const Workspace& workspace, const RowSink& sink) {
  for (int k = workspace.level_count() - 1; k > 0; --k) {
    collapse_level(mixed_level(workspace, k), workspace.blended(k), workspace.collapse_scratch());
  }
  collapse_level(mixed_level(workspace, 0), sink, workspace.collapse_scratch());
}

}  // namespace

bool can_blend_bytes(const BlendInstance& instance) {
  int width = instance.width, height = instance.height;
  if (instance.pyr_level < 1 || width < 1 || height < 1 || height % 2 != 0) return false;
  if (instance.trans_width < 0 || instance.trans_width > instance.band_width) return false;
  if (collapse_scratch(width) > int64_t{3} * width * height) return false;
  for (int k = 0; k < instance.pyr_level; ++k) {
    if (is_left_alone(width, height)) return false;
    width = next_size(width);
    height = next_size(height);
  }
  return true;
}

bool blend_bytes(BlendInstance& instance, const RowSink& sink) {
  const Workspace workspace(instance);
  reduce_sources(workspace);
  if (!reduce_weights(workspace, instance.mask)) return false;
  mix_tops(workspace);
  collapse_levels(workspace, sink);
  return true;
}

}  // namespace biseam
