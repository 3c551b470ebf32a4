#include "stages/blend/module.hpp"

#include "base/threads.hpp"
#include "stages/blend/instance_levels.hpp"
#include "stages/blend/pyramid.hpp"
#include "stages/blend/widen.hpp"
#include "stages/image/resize.hpp"
#include "stages/seam/cut.hpp"
#include "stages/seam/detail.hpp"
#include "stages/seam/path.hpp"

namespace biseam {

namespace {

// One source's share of the work: widening to the band and the band's Laplacian pyramid.
struct Decomposition {
  const BlendImage* source;
  BlendImage* band;
  int trans_width, side;
  Pyramid pyramid;
  int level_count;
  Status status;
};

void* run_decomposition(void* task) {
  Decomposition& d = *static_cast<Decomposition*>(task);
  widen(*d.source, *d.band, d.trans_width, d.side);
  d.status = build_laplacian(*d.band, d.pyramid, d.level_count);
  return nullptr;
}

Status decompose_sources(BlendInstance& instance, const BlendImage* const sources[2]) {
  Decomposition decompositions[2];
  ThreadTask tasks[2];
  for (int i = 0; i < 2; ++i) {
    decompositions[i] = {.source = sources[i],
                         .band = &instance.band[i],
                         .trans_width = instance.trans_width,
                         .side = i == 0 ? 1 : 0,
                         .pyramid = {instance.levels[i], &instance.top[i]},
                         .level_count = instance.pyr_level,
                         .status = Status::ok};
    tasks[i] = {run_decomposition, &decompositions[i]};
  }
  run_together(tasks, 2);
  return decompositions[0].status == Status::ok ? decompositions[1].status : decompositions[0].status;
}

Pyramid pyramid_of(BlendInstance& instance, Pyramids pyramid) { return {instance.levels[pyramid], &instance.top[pyramid]}; }

// A source's strip, shrunk, gray, and its detail.
Status make_detail(BlendInstance& instance, const BlendImage& source, int i, MemoryReport report) {
  copy_strip(source, instance.strip[i], instance.findpath_width, instance.trans_width, i == 0 ? 1 : 0);
  if (resize(instance.strip[i], instance.scaled_strip[i]) == Status::no_memory) return Status::no_memory;
  to_gray(instance.scaled_strip[i], instance.gray[i]);
  return extract_detail(instance.gray[i], instance.detail[i], report);
}

Status search_seam(BlendInstance& instance, const BlendImage* const sources[2], MemoryReport report) {
  for (int i = 0; i < 2; ++i) {
    if (make_detail(instance, *sources[i], i, report) == Status::no_memory) return Status::no_memory;
  }
  const Status cut = cut_seam(strip_column(instance), instance.seam_mask, instance.detail[0], instance.detail[1]);
  if (cut == Status::no_memory) return Status::no_memory;
  return resize(instance.seam_mask, instance.mask);
}

}  // namespace

int strip_column(const BlendInstance& instance) {
  return static_cast<int>((int64_t{instance.scaled_trans_width} + instance.scaled_band_width - instance.scaled_findpath_width) /
                          2);
}

Status make_mask(BlendInstance& instance, const BlendImage* const sources[2], MemoryReport report) {
  if (instance.findpath_enable != 0) return search_seam(instance, sources, report);
  fill_left_half(instance.mask);
  return Status::ok;
}

Status blend_under_mask(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& output) {
  const int levels = instance.pyr_level;
  if (decompose_sources(instance, sources) != Status::ok) return Status::no_memory;
  const Pyramid mask = pyramid_of(instance, kMask), blended = pyramid_of(instance, kBlended);
  // An instance without levels has no record for the level 0 that is written even then.
  if (levels > 0 && build_gaussian(instance.mask, mask, levels) == Status::no_memory) return Status::no_memory;
  mix_pyramids(pyramid_of(instance, kSource1), pyramid_of(instance, kSource2), mask, blended, levels);
  return collapse(*blended.top, blended.levels, output, levels);
}

Status blend_band(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& output, MemoryReport report) {
  if (instance.mask.data[0] == nullptr) return Status::no_memory;
  if (make_mask(instance, sources, report) == Status::no_memory) return Status::no_memory;
  return blend_under_mask(instance, sources, output);
}

}  // namespace biseam
