#include "frame/memory.hpp"

#include <cstdint>

#include "base/panorama_layout.hpp"

namespace biseam {

namespace {

constexpr int64_t kEntryBytes = 2 * sizeof(float);         // one table entry
constexpr int64_t kBlendPixelBytes = 3 * sizeof(int32_t);  // one pixel of a BlendImage

// The pieces of the working buffer in their order: visit(its pointer, bytes of a row).  Each has in_h rows.
template <class Visit>
void for_each_piece(StitchEngine& engine, const StitchConfig& config, Visit visit) {
  const PanoramaLayout layout = layout_of(config);
  const int64_t band = layout.band_width, pair = layout.pair_width;
  // Chroma planes have full height whatever the format.
  const auto semi_planar = [&](ImageHeader& image, int64_t luma_row, int64_t chroma_row) {
    visit(image.planes[0], luma_row);
    visit(image.planes[1], chroma_row);
  };
  MAPTIHeader* const maps[3] = {&engine.map_left, &engine.map_middle, &engine.map_right};
  for (int i = 0; i < 3; ++i) visit(maps[i]->entries, kEntryBytes * layout.strip_widths[i]);
  for (ImageHeader& image : engine.band_yuv) semi_planar(image, band, band);
  for (BlendImage& image : engine.band_rgb) visit(image.data[0], kBlendPixelBytes * band);
  for (BlendImage& image : engine.blend_out) visit(image.data[0], kBlendPixelBytes * pair);
  for (ImageHeader& image : engine.blend_yuv) semi_planar(image, pair, pair);
  semi_planar(engine.pano, config.out_luma_stride[0], config.out_chroma_stride[0]);
}

// Products of 64 bits wrap: sizes so large are no sizes whatever they come to.
int64_t wrapped_product(int64_t a, int64_t b) {
  return static_cast<int64_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
}

int64_t wrapped_sum(int64_t a, int64_t b) { return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b)); }

// Negative where a piece is too large for any block.
int64_t piece_bytes(int64_t row_bytes, int64_t rows) {
  int64_t bytes;
  return __builtin_mul_overflow(row_bytes, rows, &bytes) ? -1 : bytes;
}

void set_third_plane(ImageHeader& image) { image.planes[2] = image.planes[1] == nullptr ? nullptr : image.planes[1] + 1; }

}  // namespace

Status derive_geometry(const StitchConfig& config, StitchEngine& engine) {
  const PanoramaLayout layout = layout_of(config);
  const struct {
    int32_t& field;
    int64_t width;
  } widths[] = {{engine.band_width, layout.band_width},        {engine.pair_width, layout.pair_width},
                {engine.left_width, layout.strip_widths[0]},   {engine.middle_width, layout.strip_widths[1]},
                {engine.right_width, layout.strip_widths[2]},  {engine.left_inner, layout.plain_widths[0]},
                {engine.middle_inner, layout.plain_widths[1]}, {engine.right_inner, layout.plain_widths[2]}};
  bool sound = true;
  for (const auto& [field, width] : widths) {
    field = static_cast<int32_t>(width);
    sound = sound && width >= 0 && width <= INT32_MAX;
  }
  return sound ? Status::ok : Status::mismatch;
}

void size_engine_memory(const StitchConfig& config, EngineMemInfo& info) {
  StitchEngine none{};
  int64_t bytes = kCustomaryRoom;
  for_each_piece(none, config,
                 [&](auto*&, int64_t row_bytes) { bytes = wrapped_sum(bytes, wrapped_product(row_bytes, config.in_h)); });
  info.size = static_cast<int32_t>(wrapped_sum(bytes / kPieceAlignment * kPieceAlignment, kPieceAlignment));
  info.alignment = kPieceAlignment;
  info.two = 2;
  info.one = 1;
  info.buffer = nullptr;
}

int64_t engine_room(const StitchConfig& config) {
  StitchEngine none{};
  int64_t bytes = 1;  // the last byte of a block is no piece's
  for_each_piece(none, config, [&](auto*&, int64_t row_bytes) { bytes += room_for(piece_bytes(row_bytes, config.in_h)); });
  return bytes;
}

Status carve_engine(StitchEngine& engine) {
  const StitchConfig& config = *engine.config;
  Carver carver(engine.mem_info->buffer, engine.mem_info->size);
  for_each_piece(engine, config,
                 [&](auto*& piece, int64_t row_bytes) { carver.take(piece, piece_bytes(row_bytes, config.in_h)); });
  for (ImageHeader& image : engine.band_yuv) set_third_plane(image);
  set_third_plane(engine.blend_yuv[0]);
  // On purpose: plane 2 of the second result is the first one's.  Interleaved chroma is addressed through plane 1 alone.
  engine.blend_yuv[1].planes[2] = engine.blend_yuv[0].planes[2];
  set_third_plane(engine.pano);
  return carver.complete() ? Status::ok : Status::no_memory;
}

}  // namespace biseam
