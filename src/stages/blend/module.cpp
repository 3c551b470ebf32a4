#include "stages/blend/module.hpp"

#include "base/threads.hpp"
#include "frame/blend/narrow_band.hpp"
#include "frame/blend/streamed_band.hpp"
#include "frame/seam/search.hpp"
#include "stages/blend/pyramid.hpp"
#include "stages/blend/widen.hpp"
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

Status make_weights(BlendInstance& instance, const BlendImage* const sources[2], MemoryReport report) {
  if (instance.findpath_enable != 0) return search_seam(instance, sources, report);
  fill_left_half(instance.mask);
  return Status::ok;
}

// The definition: stage by stage, each over whole images.
Status blend_by_stages(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& output) {
  if (decompose_sources(instance, sources) != Status::ok) return Status::no_memory;
  const Pyramid pyramid1{instance.levels[0], &instance.top[0]};
  const Pyramid pyramid2{instance.levels[1], &instance.top[1]};
  const Pyramid mask{instance.levels[2], &instance.top[2]};
  const Pyramid blended{instance.levels[3], &instance.top[3]};
  if (build_gaussian(instance.mask, mask, instance.pyr_level) == Status::no_memory) return Status::no_memory;
  mix_pyramids(pyramid1, pyramid2, mask, blended, instance.pyr_level);
  return collapse(*blended.top, blended.levels, output, instance.pyr_level);
}

}  // namespace

Status blend_band(BlendInstance& instance, const BlendImage& source1, const BlendImage& source2, BlendImage& output,
                  MemoryReport report, Weights weights, const RowSink* sink) {
  if (instance.mask.data[0] == nullptr) return Status::no_memory;  // an instance that could not be carved
  const BlendImage* const sources[2] = {&source1, &source2};
  if (weights == Weights::made && make_weights(instance, sources, report) == Status::no_memory) return Status::no_memory;
  if (!can_be_streamed(instance, sources, output)) return blend_by_stages(instance, sources, output);
  if (!blend_narrow(instance, sources, output, sink)) blend_streamed(instance, sources, output);
  return Status::ok;
}

Status blend_bytes(BlendInstance& instance, BlendImage& output, MemoryReport report, Weights weights, const RowSink* sink) {
  if (weights == Weights::made && make_weights(instance, nullptr, report) == Status::no_memory) return Status::no_memory;
  return blend_narrow(instance, nullptr, output, sink) ? Status::ok : Status::mismatch;
}

}  // namespace biseam
