// The exported functions of image arithmetic, pyramids and the blend module.
#include "base/arena.hpp"
#include "biseam/biseam.h"
#include "stages/blend/arithmetic.hpp"
#include "stages/blend/module.hpp"
#include "stages/blend/pyramid.hpp"
#include "stages/blend/widen.hpp"

namespace {

void blend_one(BlendInstance& instance, const BlendImage& source1, const BlendImage& source2, BlendImage& output) {
  const BlendImage* const sources[2] = {&source1, &source2};
  (void)biseam::blend_band(instance, sources, output, biseam::print_missing_memory);
}

}  // namespace

void CreatImage(BlendImage* image, int32_t value) { biseam::fill(*image, value); }
int32_t SubImage(BlendImage* a, BlendImage* b, BlendImage* out) { return biseam::code_of(biseam::subtract(*a, *b, *out)); }
int32_t AddImage(BlendImage* a, BlendImage* b, BlendImage* out) { return biseam::code_of(biseam::add(*a, *b, *out)); }
int32_t MulImage(BlendImage* a, BlendImage* b, BlendImage* out) { return biseam::code_of(biseam::multiply(*a, *b, *out)); }

intptr_t MemCopyImage(BlendImage* src, BlendImage* dst) {
  if (biseam::copy_samples(*src, *dst) != biseam::Status::ok) return -1;
  return reinterpret_cast<intptr_t>(dst->data[0]);
}

void CreatBlend(BlendImage* source, BlendImage* band, int32_t trans_width, int32_t side) {
  biseam::widen(*source, *band, trans_width, side);
}

void BuildLaplacianPyramid(BlendImage* image, BlendImage** levels, BlendImage* top, int32_t level_count) {
  (void)biseam::build_laplacian(*image, {*levels, top}, level_count);
}

void BuildGuassPyramid(BlendImage* image, BlendImage** levels, BlendImage* top, int32_t level_count) {
  (void)biseam::build_gaussian(*image, {*levels, top}, level_count);
}

void BlendLapPyrs(BlendImage** levels_a, BlendImage* top_a, BlendImage** levels_b, BlendImage* top_b, BlendImage** levels_m,
                  BlendImage* top_m, BlendImage** levels_out, BlendImage* top_out, int32_t level_count) {
  biseam::mix_pyramids({*levels_a, top_a}, {*levels_b, top_b}, {*levels_m, top_m}, {*levels_out, top_out}, level_count);
}

void ReconstructImage(BlendImage* top, BlendImage** levels, BlendImage* out, int32_t level_count) {
  (void)biseam::collapse(*top, *levels, *out, level_count);
}

void* CreatBlend_BuildLaplacianPyramid(void* args) {
  const PyramidTaskArgs& task = *static_cast<PyramidTaskArgs*>(args);
  biseam::widen(*task.source, *task.band, task.trans_width, task.side);
  (void)biseam::build_laplacian(*task.image, {*task.levels, task.top}, task.level_count);
  return nullptr;
}

int32_t GetMemSize(BlendConfig* config, BlendMemory* memory) {
  biseam::size_blend_memory(*config, *memory);
  return 0;
}

void* BLEND_AllocBuffer(BlendArena* arena, int32_t bytes) { return biseam::take_piece(*arena, bytes); }

int32_t Blend_Creat(BlendConfig* config, BlendMemory* memory, BlendInstance* instance) {
  (void)biseam::create_blend(*config, *memory, *instance);
  return 0;
}

int32_t SetConfig_Blend(BlendInstance* instance) {
  biseam::layout_blend(*instance);
  return 0;
}

int32_t Blend_Proc(BlendInstance* instance, BlendImage* source1, BlendImage* source2, BlendImage* output) {
  blend_one(*instance, *source1, *source2, *output);
  return 0;
}

void* Blend_main_pht(void* args) {
  const BlendThreadArgs& task = *static_cast<BlendThreadArgs*>(args);
  blend_one(*task.instance, *task.source1, *task.source2, *task.output);
  return nullptr;
}
