// The exported functions of the engine.
#include <sys/time.h>

#include <cstdio>

#include "base/arena.hpp"
#include "base/records.hpp"
#include "biseam/biseam.h"
#include "frame/frame.hpp"
#include "frame/lifecycle.hpp"
#include "frame/memory.hpp"

namespace {

// 32-bit microseconds between two times; wraps after some 35 minutes.
int32_t elapsed_microseconds(const timeval& start, const timeval& end) {
  const uint32_t seconds = static_cast<uint32_t>(end.tv_sec - start.tv_sec);
  return static_cast<int32_t>(static_cast<uint32_t>(end.tv_usec - start.tv_usec) + 1000000u * seconds);
}

uint8_t* plane(void* const frame[], int word) { return static_cast<uint8_t*>(frame[word - 1]); }

}  // namespace

int32_t QOR_GetMemSize_BI(StitchConfig* config, EngineMemInfo* mem_info) {
  biseam::size_engine_memory(*config, *mem_info);
  return 0;
}

int32_t QOR_Create_BI_Soft(StitchConfig* config, StitchEngine** engine) {
  if (biseam::create_engine(*config, *engine) == biseam::Status::ok) return 0;
  std::puts("malloc fail!");
  return BISEAM_MALLOC_FAIL;
}

int32_t QOR_SetConfig_BI_Soft(StitchEngine** engine) { return biseam::code_of(biseam::configure_engine(**engine)); }

int32_t QOR_Proc_BI_Soft(StitchEngine** engine, void* const in_frame[], void* const out_frame[]) {
  timeval start;
  gettimeofday(&start, nullptr);
  const biseam::FisheyePlanes fisheye[2] = {{plane(in_frame, 3), plane(in_frame, 7)}, {plane(in_frame, 4), plane(in_frame, 8)}};
  (void)biseam::process_frame(**engine, fisheye, {plane(out_frame, 5), plane(out_frame, 13)},
                              {.report = biseam::print_missing_memory});
  timeval end;
  gettimeofday(&end, nullptr);
  const float elapsed = static_cast<float>(elapsed_microseconds(start, end));
  std::printf("------>QOR_Proc_BI_Soft Used Time:%f ms<------\n", static_cast<double>(elapsed / 1000.0f));
  return 0;
}

int32_t QOR_Destroy_BI_Soft(StitchEngine** engine) {
  biseam::destroy_engine(*engine);
  return 0;
}

int32_t print_cfg(StitchConfig* config) {
  std::printf("qor_cfg->in_h:%d\n", config->in_h);
  std::printf("qor_cfg->in_w:%d\n", config->in_w);
  std::printf("qor_cfg->in_yuv_type:%d\n", config->in_yuv_type);
  std::printf("qor_cfg->out_h[0]:%d\n", config->out_h[0]);
  std::printf("qor_cfg->out_w[0]:%d\n", config->out_w[0]);
  std::printf("qor_cfg->out_flip[0]:%d\n", config->out_flip[0]);
  std::printf("qor_cfg->out_mirror[0]:%d\n", config->out_mirror[0]);
  std::printf("qor_cfg->out_yuv_type:%d\n", config->out_yuv_type);
  std::printf("qor_cfg->p0:%f\n", static_cast<double>(config->p0));
  std::printf("qor_cfg->cx0:%f\n", static_cast<double>(config->cx0));
  std::printf("qor_cfg->cy0:%f\n", static_cast<double>(config->cy0));
  std::printf("qor_cfg->p1:%f\n", static_cast<double>(config->p1));
  std::printf("qor_cfg->cx1:%f\n", static_cast<double>(config->cx1));
  std::printf("qor_cfg->cy1:%f\n", static_cast<double>(config->cy1));
  std::printf("qor_cfg->change_focus:%f\n", static_cast<double>(config->change_focus));
  std::printf("qor_cfg->feather:%d\n", config->feather);
  std::printf("qor_cfg->trans_width:%d\n", config->trans_width);
  std::printf("qor_cfg->findpath_width:%d\n", config->findpath_width);
  std::printf("qor_cfg->pyr_level:%d\n", config->pyr_level);
  std::printf("qor_cfg->findpath_enable:%d\n", config->findpath_enable);
  return std::printf("qor_cfg->inv_scale:%f\n\n\n", static_cast<double>(config->inv_scale));
}

void* QOR_AllocBuffer_bi(MemoryCursor* cursor, int32_t bytes) { return biseam::take_piece(*cursor, bytes); }

void qor_mem_alloc(StitchEngine* engine) { (void)biseam::carve_engine(*engine); }

int32_t init_image_header(ImageHeader* header, int32_t width, int32_t height, int32_t luma_stride, int32_t chroma_stride,
                          int32_t format) {
  return biseam::code_of(biseam::describe_image(*header, width, height, luma_stride, chroma_stride, format));
}

void create_image_header(ImageHeader* header, uint8_t* const planes[], const int32_t strides[], int32_t width, int32_t height,
                         int32_t format) {
  biseam::describe_planes(*header, planes, strides, width, height, format);
}

int32_t malloc_image_data(ImageHeader* header, int32_t width, int32_t height, int32_t luma_stride, int32_t chroma_stride,
                          int32_t format) {
  biseam::allocate_image(*header, width, height, luma_stride, chroma_stride, format);
  return 1;
}

void free_image_data(ImageHeader* header) { biseam::release_image(*header); }

int32_t init_blendimage_header(void* image, int32_t width, int32_t height, int32_t type) {
  if (type == BISEAM_RGB) {
    biseam::describe_blend_image(*static_cast<BlendImage*>(image), width, height);
  } else if (type == BISEAM_GRAY) {
    biseam::describe_gray(*static_cast<BlendGray*>(image), width, height);
  } else {
    return -1;
  }
  return 0;
}

int32_t malloc_blendimage_header(void* image, int32_t width, int32_t height, int32_t type) {
  if (type == BISEAM_RGB) {
    (void)biseam::allocate_blend_image(*static_cast<BlendImage*>(image), width, height);
  } else if (type == BISEAM_GRAY) {
    (void)biseam::allocate_gray(*static_cast<BlendGray*>(image), width, height);
  } else {
    return -1;
  }
  return 0;
}

void FreeImageHeader(void* image, int32_t type) {
  if (type == BISEAM_RGB) {
    biseam::release_samples(*static_cast<BlendImage*>(image));
  } else {
    biseam::release_samples(*static_cast<BlendGray*>(image));
  }
}
