#include "frame/blend/narrow_band.hpp"

#include <cstddef>
#include <cstdint>

#include "base/threads.hpp"
#include "frame/blend/narrow_collapse.hpp"
#include "frame/blend/narrow_reduction.hpp"
#include "frame/blend/narrow_rows.hpp"
#include "stages/blend/instance_levels.hpp"

namespace biseam {

namespace {

ByteImage bytes_of(BlendInstance& instance, int pyramid, int k) { return ByteImage::in(level_of(instance, pyramid, k)); }

// Fills a Gaussian pyramid of bytes.
struct Reduction {
  BlendInstance* instance;
  int pyramid;
  const BlendImage* source;  // null: level 0 is there
  int trans_width, side;
  uint32_t most;
  bool in_range;
};

// Bytes leave three quarters of level 0: the row of sums lies there, from a whole sample on.
uint16_t* sums_behind(const BlendImage& level0) {
  const ptrdiff_t samples = ptrdiff_t{level0.height} * level0.stride;
  return reinterpret_cast<uint16_t*>(level0.data[0] + (samples + 3) / 4);
}

bool reduce_levels(const Reduction& r) {
  const auto level = [&](int k) { return bytes_of(*r.instance, r.pyramid, k); };
  uint16_t* const sums = sums_behind(level_of(*r.instance, r.pyramid, 0));
  if (r.source == nullptr) {
    reduce_bytes(level(0), level(1), sums);
  } else if (!narrow_and_reduce(*r.source, r.trans_width, r.side, r.most, level(0), level(1), sums)) {
    return false;
  }
  for (int k = 1; k < r.instance->pyr_level; ++k) reduce_bytes(level(k), level(k + 1), sums);
  return true;
}

void* run_reduction(void* task) {
  Reduction& r = *static_cast<Reduction*>(task);
  r.in_range = reduce_levels(r);
  return nullptr;
}

bool reduce_all(BlendInstance& instance, const BlendImage* const sources[2]) {
  Reduction reductions[2];
  ThreadTask tasks[2];
  for (int i = 0; i < 2; ++i) {
    reductions[i] = {&instance, i,    sources != nullptr ? sources[i] : nullptr, instance.trans_width, i == 0 ? 1 : 0,
                     UINT8_MAX, false};
    tasks[i] = {run_reduction, &reductions[i]};
  }
  run_together(tasks, 2);
  if (!reductions[0].in_range || !reductions[1].in_range) return false;
  return reduce_levels({&instance, kMask, &instance.mask, 0, 1, BISEAM_WEIGHT_ONE, false});
}

void mix_tops(BlendInstance& instance) {
  const auto top = [&](int pyramid) { return ByteImage::in(instance.top[pyramid]); };
  const BlendImage& out = instance.top[kBlended];
  for (int y = 0; y < out.height; ++y) {
    mix_byte_row(top(kSource1).row(y), top(kSource2).row(y), top(kMask).row(y), out.data[0] + ptrdiff_t{y} * out.stride,
                 out.stride);
  }
}

void collapse_levels(BlendInstance& instance, BlendImage& band, const RowSink* sink) {
  int32_t* const scratch = level_of(instance, kBlended, 0).data[0];
  mix_tops(instance);
  for (int k = instance.pyr_level - 1; k >= 0; --k) {
    const auto level = [&](int pyramid, int n) { return bytes_of(instance, pyramid, n); };
    const MixedByteLevel mixed{level(kSource1, k),     level(kSource2, k),     level(kMask, k),
                               level(kSource1, k + 1), level(kSource2, k + 1), &level_of(instance, kBlended, k + 1)};
    collapse_byte_level(mixed, k > 0 ? instance.levels[kBlended][k] : band, scratch, k > 0 ? nullptr : sink);
  }
}

}  // namespace

bool blend_narrow(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& output, const RowSink* sink) {
  if (!reduce_all(instance, sources)) return false;
  // The output may say it is higher: the rest stays.
  BlendImage band = instance.levels[kBlended][0];
  band.data[0] = output.data[0];
  collapse_levels(instance, band, output.height == instance.height ? sink : nullptr);
  return true;
}

}  // namespace biseam
