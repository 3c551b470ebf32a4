#include "frame/stages.hpp"

#include "base/threads.hpp"
#include "frame/bands/blended_rows.hpp"
#include "frame/bands/whole_band.hpp"
#include "frame/blend/byte_band.hpp"
#include "frame/seam/search.hpp"
#include "stages/blend/module.hpp"
#include "stages/seam/path.hpp"

namespace biseam {

namespace {

struct BlendTask {
  StitchEngine* engine;
  const FramePlan* plan;
  const FrameOptions* options;
  int overlap;
  Status status;
};

// From the bytes that the conversion left.  False where a weight, a host's own, can't be taken as a byte.
bool blend_as_bytes(const BlendTask& t) {
  BlendInstance& instance = *t.engine->blend[t.overlap];
  if (t.options->weights == Weights::made) {
    if (instance.findpath_enable != 0) {
      search_bytes(instance);
    } else {
      fill_left_half(instance.mask);
    }
  }
  BlendedRows rows(t.engine->blend_yuv[t.overlap], t.plan->format);
  return blend_bytes(instance, rows.sink());
}

// By the definition, from bands of 32-bit samples.
Status blend_as_integers(const BlendTask& t) {
  StitchEngine& e = *t.engine;
  BlendInstance& instance = *e.blend[t.overlap];
  const BlendImage* const sources[2] = {&e.band_rgb[2 * t.overlap], &e.band_rgb[2 * t.overlap + 1]};
  Status status = Status::ok;
  if (t.options->weights == Weights::made) status = make_mask(instance, sources, t.options->report);
  if (status != Status::no_memory) status = blend_under_mask(instance, sources, e.blend_out[t.overlap]);
  convert_to_yuv(e, t.overlap, t.plan->format);
  return status == Status::no_memory ? Status::no_memory : Status::ok;
}

void* run_blend(void* task) {
  BlendTask& t = *static_cast<BlendTask*>(task);
  const bool by_bytes = t.plan->by_bytes[t.overlap];
  if (by_bytes && blend_as_bytes(t)) {
    t.status = Status::ok;
    return nullptr;
  }
  // A mask that has been made is not made differently from the same bands once more.
  if (by_bytes) {
    for (int k = 0; k < 2; ++k) convert_to_integers(*t.engine, 2 * t.overlap + k, t.plan->format);
  }
  t.status = blend_as_integers(t);
  return nullptr;
}

}  // namespace

Status blend_stage(StitchEngine& engine, const FramePlan& plan, const FrameOptions& options) {
  BlendTask blends[2];
  ThreadTask tasks[2];
  for (int k = 0; k < 2; ++k) {
    blends[k] = {&engine, &plan, &options, k, Status::ok};
    tasks[k] = {run_blend, &blends[k]};
  }
  run_together(tasks, 2);
  return blends[0].status != Status::ok ? blends[0].status : blends[1].status;
}

}  // namespace biseam
