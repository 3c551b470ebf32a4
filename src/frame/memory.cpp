#include "frame/memory.hpp"

#include <cstdint>

#include "base/arena.hpp"

namespace biseam {

namespace {

constexpr int64_t kEntryBytes = 2 * sizeof(float);         // one table entry
constexpr int64_t kBlendPixelBytes = 3 * sizeof(int32_t);  // one pixel of a BlendImage
constexpr int64_t kRoundingSlack = 4096;                   // the carved pieces' rounding to 128 bytes

// Column of the seams, W / 4 and 3 W / 4.
int64_t first_seam(const StitchConfig& config) { return config.out_w[0] / 4; }
int64_t second_seam(const StitchConfig& config) { return int64_t{3} * config.out_w[0] / 4; }

int64_t band_width_of(const StitchConfig& config) { return config.trans_width + int64_t{2} * config.feather; }
int64_t pair_width_of(const StitchConfig& config) { return 2 * (int64_t{config.trans_width} + config.feather); }
int64_t left_width_of(const StitchConfig& config) { return config.feather + first_seam(config); }
int64_t middle_width_of(const StitchConfig& config) {
  return int64_t{2} * config.feather - first_seam(config) + second_seam(config);
}
int64_t right_width_of(const StitchConfig& config) { return int64_t{config.out_w[0]} + config.feather - second_seam(config); }

void take_semi_planar(Carver& carver, ImageHeader& image, int64_t luma_bytes, int64_t chroma_bytes) {
  carver.take(image.planes[0], luma_bytes);
  carver.take(image.planes[1], chroma_bytes);
  image.planes[2] = image.planes[1] == nullptr ? nullptr : image.planes[1] + 1;
}

}  // namespace

Status derive_geometry(const StitchConfig& config, StitchEngine& engine) {
  const int64_t band = band_width_of(config);
  const int64_t widths[8] = {band,
                             pair_width_of(config),
                             left_width_of(config),
                             middle_width_of(config),
                             right_width_of(config),
                             left_width_of(config) - band,
                             middle_width_of(config) - 2 * band,
                             right_width_of(config) - band};
  int32_t* const fields[8] = {&engine.band_width,  &engine.pair_width, &engine.left_width,   &engine.middle_width,
                              &engine.right_width, &engine.left_inner, &engine.middle_inner, &engine.right_inner};
  bool sound = true;
  for (int i = 0; i < 8; ++i) {
    *fields[i] = static_cast<int32_t>(widths[i]);
    sound = sound && widths[i] >= 0 && widths[i] <= INT32_MAX;
  }
  return sound ? Status::ok : Status::mismatch;
}

void size_engine_memory(const StitchConfig& config, EngineMemInfo& info) {
  const int64_t height = config.in_h;
  const int64_t strides = int64_t{config.out_chroma_stride[0]} + config.out_luma_stride[0];
  const int64_t table_columns = right_width_of(config) + middle_width_of(config) + left_width_of(config);
  // Four YUV bands (8 bytes a pixel) and four RGB bands (48); two blended pairs (24) and their YUV images (4).
  const int64_t bytes = height * strides + 56 * band_width_of(config) * height + 28 * pair_width_of(config) * height +
                        kEntryBytes * height * table_columns + kRoundingSlack;
  info.size = static_cast<int32_t>(block_size(bytes));
  info.alignment = kPieceAlignment;
  info.two = 2;
  info.one = 1;
  info.buffer = nullptr;
}

Status carve_engine(StitchEngine& engine) {
  const StitchConfig& config = *engine.config;
  const int64_t height = config.in_h;
  const int64_t band = height * engine.band_width;
  const int64_t pair = height * engine.pair_width;
  Carver carver(engine.mem_info->buffer, engine.mem_info->size);
  carver.take(engine.map_left.entries, kEntryBytes * height * engine.left_width);
  carver.take(engine.map_middle.entries, kEntryBytes * height * engine.middle_width);
  carver.take(engine.map_right.entries, kEntryBytes * height * engine.right_width);
  // Chroma planes have full height whatever the format.
  for (ImageHeader& image : engine.band_yuv) take_semi_planar(carver, image, band, band);
  for (BlendImage& image : engine.band_rgb) carver.take(image.data[0], kBlendPixelBytes * band);
  for (BlendImage& image : engine.blend_out) carver.take(image.data[0], kBlendPixelBytes * pair);
  for (ImageHeader& image : engine.blend_yuv) take_semi_planar(carver, image, pair, pair);
  // On purpose: plane 2 of the second result is the first one's.  Interleaved chroma is addressed through plane 1 alone.
  engine.blend_yuv[1].planes[2] = engine.blend_yuv[0].planes[2];
  take_semi_planar(carver, engine.pano, height * config.out_luma_stride[0], height * config.out_chroma_stride[0]);
  return carver.complete() ? Status::ok : Status::no_memory;
}

}  // namespace biseam
