#include "frame/lifecycle.hpp"

#include <cstdint>
#include <cstdlib>
#include <initializer_list>

#include "base/large_block.hpp"
#include "base/panorama_layout.hpp"
#include "base/records.hpp"
#include "frame/memory.hpp"
#include "stages/blend/module.hpp"

namespace biseam {

namespace {

template <class Record>
Record* new_record() {
  return static_cast<Record*>(std::calloc(1, sizeof(Record)));
}

Status allocate_records(StitchEngine& engine) {
  engine.mem_info = new_record<EngineMemInfo>();
  for (int k = 0; k < 2; ++k) {
    engine.blend_mem[k] = new_record<BlendMemory>();
    engine.blend[k] = new_record<BlendInstance>();
  }
  const bool all = engine.mem_info && engine.blend_mem[0] && engine.blend_mem[1] && engine.blend[0] && engine.blend[1];
  return all ? Status::ok : Status::no_memory;
}

Status allocate_blocks(StitchEngine& engine, const BlendConfig& settings, Room room) {
  size_engine_memory(*engine.config, *engine.mem_info);
  size_blend_memory(settings, *engine.blend_mem[0]);
  if (room == Room::every_piece) {
    engine.mem_info->size = static_cast<int32_t>(engine_room(*engine.config));
    engine.blend_mem[0]->size = static_cast<uint32_t>(blend_room(settings));
  }
  engine.blend_mem[1]->size = engine.blend_mem[0]->size;
  // A size that left 32 bits came out negative or too small: the first can't be had, the second can't be carved.
  const int64_t size = engine.mem_info->size;
  engine.mem_info->buffer = size > 0 ? allocate_large_block(static_cast<size_t>(size)) : nullptr;
  bool all = engine.mem_info->buffer != nullptr;
  for (BlendMemory* memory : engine.blend_mem) {
    memory->base = allocate_large_block(memory->size);
    all = all && memory->base != nullptr;
  }
  return all ? Status::ok : Status::no_memory;
}

// Everything of a new engine; the caller destroys what a failure leaves.
Status fill_engine(StitchConfig& config, StitchEngine& engine, Room room) {
  engine.config = &config;
  Status status = derive_geometry(config, engine);
  if (status == Status::ok) status = allocate_records(engine);
  if (status != Status::ok) return status;
  const BlendConfig settings = blend_settings(config);
  status = allocate_blocks(engine, settings, room);
  if (status == Status::ok) status = carve_engine(engine);
  for (int k = 0; k < 2 && status == Status::ok; ++k) {
    status = create_blend(settings, *engine.blend_mem[k], *engine.blend[k]);
    engine.blend[k]->config = nullptr;  // settings end with this call
  }
  return status;
}

void describe_bands(StitchEngine& engine, const StitchConfig& config) {
  const int height = config.in_h;
  const int band = engine.band_width;
  const int pair = engine.pair_width;
  for (ImageHeader& image : engine.band_yuv) describe_image(image, band, height, band, band, config.in_yuv_type);
  for (BlendImage& image : engine.band_rgb) describe_blend_image(image, band, height);
  for (BlendImage& image : engine.blend_out) describe_blend_image(image, pair, height);
  for (ImageHeader& image : engine.blend_yuv) describe_image(image, pair, height, pair, pair, config.in_yuv_type);
}

}  // namespace

BlendConfig blend_settings(const StitchConfig& config) {
  return {.trans_width = config.trans_width,
          .findpath_width = config.findpath_width,
          .band_width = static_cast<int32_t>(layout_of(config).band_width),
          .in_h = config.in_h,
          .pyr_level = config.pyr_level,
          .inv_scale = config.inv_scale,
          .findpath_enable = config.findpath_enable};
}

bool fits_carving(const StitchConfig& config, const StitchEngine& engine) {
  StitchEngine now{};
  return derive_geometry(config, now) == Status::ok && now.band_width == engine.band_width &&
         now.pair_width == engine.pair_width && now.left_width == engine.left_width &&
         now.middle_width == engine.middle_width && now.right_width == engine.right_width &&
         config.in_h == engine.blend[0]->height;
}

Status create_engine(StitchConfig& config, StitchEngine*& engine, Room room) {
  StitchEngine* made = new_record<StitchEngine>();
  if (made == nullptr) return Status::no_memory;
  const Status status = fill_engine(config, *made, room);
  if (status == Status::ok) {
    engine = made;
  } else {
    destroy_engine(made);
  }
  return status;
}

Status configure_engine(StitchEngine& engine, BuildStrip build) {
  const StitchConfig& config = *engine.config;
  if (!fits_carving(config, engine)) return Status::mismatch;
  engine.feather = config.feather;
  build_tables(config, engine, build);
  for (ImageHeader& image : engine.src_image) {
    describe_image(image, config.in_w, config.in_h, config.in_luma_stride, config.in_chroma_stride, config.in_yuv_type);
  }
  describe_bands(engine, config);
  // Twice: where out_yuv_type is no code that sets strides and steps, those of in_yuv_type stay.
  for (int format : {config.in_yuv_type, config.out_yuv_type}) {
    describe_image(engine.pano, config.out_w[0], config.out_h[0], config.out_luma_stride[0], config.out_chroma_stride[0],
                   format);
  }
  for (BlendInstance* instance : engine.blend) layout_blend(*instance);
  return Status::ok;
}

void destroy_engine(StitchEngine* engine) {
  if (engine == nullptr) return;
  if (engine->mem_info != nullptr) std::free(engine->mem_info->buffer);
  std::free(engine->mem_info);
  for (int k = 0; k < 2; ++k) {
    if (engine->blend_mem[k] != nullptr) std::free(engine->blend_mem[k]->base);
    std::free(engine->blend_mem[k]);
    std::free(engine->blend[k]);
  }
  std::free(engine);
}

}  // namespace biseam
