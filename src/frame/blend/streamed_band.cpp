#include "frame/blend/streamed_band.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/threads.hpp"
#include "frame/blend/level_collapse.hpp"
#include "frame/blend/widened_reduction.hpp"
#include "stages/blend/arithmetic_rows.hpp"
#include "stages/blend/instance_levels.hpp"

namespace biseam {

namespace {

// Fills a Gaussian pyramid from level 1 on.  Its level 0 is the source, widened; the row of sums lies where it would be stored.
struct Reduction {
  BlendInstance* instance;
  int pyramid;
  const BlendImage* source;
  int trans_width, side;
};

void reduce_levels(const Reduction& r) {
  int32_t* const sums = level_of(*r.instance, r.pyramid, 0).data[0];
  reduce_widened(*r.source, r.trans_width, r.side, level_of(*r.instance, r.pyramid, 1), sums);
  for (int k = 1; k < r.instance->pyr_level; ++k) {
    reduce_widened(level_of(*r.instance, r.pyramid, k), 0, 1, level_of(*r.instance, r.pyramid, k + 1), sums);
  }
}

void* run_reduction(void* task) {
  reduce_levels(*static_cast<const Reduction*>(task));
  return nullptr;
}

// Row by row through scratch: the tops of the sources are still to be expanded.
void mix_tops(BlendInstance& instance, int32_t* scratch) {
  const BlendImage& out = instance.top[kBlended];
  const ptrdiff_t count = out.stride;
  for (int y = 0; y < out.height; ++y) {
    const ptrdiff_t row = y * count;
    int32_t* const products[2] = {scratch, scratch + count};
    for (int i = 0; i < 2; ++i) {
      std::memcpy(products[i], instance.top[i].data[0] + row, static_cast<size_t>(count) * sizeof(int32_t));
    }
    mix_row(products[0], products[1], instance.top[kMask].data[0] + row, out.data[0] + row, count);
  }
}

void collapse_levels(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& band) {
  int32_t* const scratch = level_of(instance, kBlended, 0).data[0];
  mix_tops(instance, scratch);
  for (int k = instance.pyr_level - 1; k >= 0; --k) {
    const auto gaussian_level = [&](int i) -> GaussianLevel {
      const BlendImage* const below = &level_of(instance, i, k + 1);
      if (k > 0) return {&instance.levels[i][k], 0, 1, below};
      return {sources[i], instance.trans_width, i == 0 ? 1 : 0, below};
    };
    const MixedLevel level{gaussian_level(kSource1), gaussian_level(kSource2),
                           k > 0 ? &instance.levels[kMask][k] : &instance.mask, &level_of(instance, kBlended, k + 1)};
    collapse_level(level, k > 0 ? instance.levels[kBlended][k] : band, scratch);
  }
}

}  // namespace

void blend_streamed(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& output) {
  Reduction reductions[2];
  ThreadTask tasks[2];
  for (int i = 0; i < 2; ++i) {
    reductions[i] = {&instance, i, sources[i], instance.trans_width, i == 0 ? 1 : 0};
    tasks[i] = {run_reduction, &reductions[i]};
  }
  run_together(tasks, 2);
  reduce_levels({&instance, kMask, &instance.mask, 0, 1});
  // The output may say it is higher: the rest stays.
  BlendImage band = instance.levels[kBlended][0];
  band.data[0] = output.data[0];
  collapse_levels(instance, sources, band);
}

}  // namespace biseam
