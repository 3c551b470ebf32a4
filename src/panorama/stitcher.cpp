#include "biseam/stitcher.hpp"

#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "base/panorama_layout.hpp"
#include "base/rounding.hpp"
#include "frame/frame.hpp"
#include "frame/lifecycle.hpp"
#include "frame/memory.hpp"
#include "panorama/error_writer.hpp"
#include "panorama/records.hpp"
#include "panorama/rules.hpp"
#include "panorama/tables.hpp"
#include "stages/blend/module.hpp"

namespace biseam {

struct Stitcher::State {
  StitchConfig config;  // what engine->config points to
  StitcherOptions options;
  StitchEngine* engine;
  bool has_seams;  // of a frame, or loaded
};

namespace {

int32_t chroma_rows(const StitchConfig& config) {
  return config.in_yuv_type == BISEAM_YUV420_SEMIPLANAR ? config.in_h / 2 : config.in_h;
}

std::size_t plane_bytes(int32_t rows, int32_t stride, int32_t width) {
  return static_cast<std::size_t>(rows - 1) * static_cast<std::size_t>(stride) + static_cast<std::size_t>(width);
}

Error check_plane(const char* name, std::span<const std::uint8_t> plane, std::size_t least) {
  if (plane.size() < least) {
    return ErrorWriter::write(ErrorCode::buffer_too_small, "%s has %zu bytes: must be %zu or more", name, plane.size(), least);
  }
  if (plane.data() != nullptr) return {};
  return ErrorWriter::write(ErrorCode::buffer_too_small, "%s is null: must point to %zu bytes or more", name, least);
}

Error check_planes(const StitcherSizes& least, const FisheyePicture& lens0, const FisheyePicture& lens1,
                   const PanoramaPicture& panorama) {
  if (Error error = check_plane("lens0.luma", lens0.luma, least.fisheye_luma)) return error;
  if (Error error = check_plane("lens0.chroma", lens0.chroma, least.fisheye_chroma)) return error;
  if (Error error = check_plane("lens1.luma", lens1.luma, least.fisheye_luma)) return error;
  if (Error error = check_plane("lens1.chroma", lens1.chroma, least.fisheye_chroma)) return error;
  if (Error error = check_plane("panorama.luma", panorama.luma, least.panorama_luma)) return error;
  return check_plane("panorama.chroma", panorama.chroma, least.panorama_chroma);
}

// The remap's records have no constant planes; it only reads them.
FisheyePlanes planes_of(const FisheyePicture& picture) {
  return {const_cast<std::uint8_t*>(picture.luma.data()), const_cast<std::uint8_t*>(picture.chroma.data())};
}

void clear(BlendImage& image) {
  const std::size_t samples = static_cast<std::size_t>(image.stride) * static_cast<std::size_t>(image.height);
  if (samples != 0) std::memset(image.data[0], 0, samples * sizeof(int32_t));
}

// A search writes the whole mask from the seam mask; the fixed mask is written on one side only.
void empty_masks(BlendInstance& blend) { clear(blend.findpath_enable != 0 ? blend.seam_mask : blend.mask); }

// Samples of a row, all channels: they differ in the lowest rows.
std::size_t row_samples(const BlendImage& mask) {
  return static_cast<std::size_t>(mask.width) * static_cast<std::size_t>(mask.steps[0]);
}

std::size_t mask_samples(const BlendImage& mask) { return row_samples(mask) * static_cast<std::size_t>(mask.height); }

int32_t* mask_row(const BlendImage& mask, int y) { return mask.data[0] + std::ptrdiff_t{mask.stride} * y; }

uint8_t* save_mask(const BlendImage& mask, uint8_t* to) {
  for (int y = 0; y < mask.height; ++y) {
    const int32_t* from = mask_row(mask, y);
    for (std::size_t x = 0; x < row_samples(mask); ++x) *to++ = static_cast<uint8_t>(from[x]);
  }
  return to;
}

const uint8_t* load_mask(const uint8_t* from, BlendImage& mask) {
  for (int y = 0; y < mask.height; ++y) {
    int32_t* to = mask_row(mask, y);
    for (std::size_t x = 0; x < row_samples(mask); ++x) to[x] = *from++;
  }
  return from;
}

}  // namespace

Result<Stitcher> Stitcher::create(const StitchConfig& config, const StitcherOptions& options) {
  static_assert(std::is_trivially_copyable_v<State>);
  const RoundToNearest rounding;
  if (Error error = check_rules(config)) return error;
  StitcherOptions chosen;
  if (!read_record(&options, StitcherOptions{}, sizeof(StitcherOptions), chosen)) {
    return ErrorWriter::write(ErrorCode::invalid_configuration, "options.size is %u: must be %zu, as it is from the beginning",
                              options.size, sizeof(StitcherOptions));
  }
  auto* state = static_cast<State*>(std::malloc(sizeof(State)));
  if (state == nullptr) return ErrorWriter::write(ErrorCode::out_of_memory, "out of memory: %zu bytes", sizeof(State));
  *state = {config, chosen, nullptr, false};
  Stitcher stitcher(state);
  if (create_engine(state->config, state->engine, Room::every_piece) != Status::ok) {
    return ErrorWriter::write(
        ErrorCode::out_of_memory, "out of memory: the engine takes %lld bytes and two blend blocks of %lld",
        static_cast<long long>(engine_room(config)), static_cast<long long>(blend_room(blend_settings(config))));
  }
  (void)configure_engine(*state->engine);
  mend_axes(*state->engine);
  if (Error error = check_tables(*state->engine)) return error;
  return stitcher;
}

Error Stitcher::process(const FisheyePicture& lens0, const FisheyePicture& lens1, const PanoramaPicture& panorama) {
  return process(lens0, lens1, panorama, Seams::fresh);
}

Error Stitcher::process(const FisheyePicture& lens0, const FisheyePicture& lens1, const PanoramaPicture& panorama,
                        Seams seams) {
  if (Error error = check_planes(sizes(), lens0, lens1, panorama)) return error;
  const RoundToNearest rounding;
  StitchEngine& engine = *state_->engine;
  const bool kept = seams == Seams::kept && state_->has_seams;
  if (!kept && state_->options.fresh_seam) {
    for (BlendInstance* blend : engine.blend) empty_masks(*blend);
  }
  const FisheyePlanes fisheye[2] = {planes_of(lens0), planes_of(lens1)};
  const FisheyePlanes out = {panorama.luma.data(), panorama.chroma.data()};
  const Status status = process_frame(engine, fisheye, out, {.weights = kept ? Weights::kept : Weights::made});
  state_->has_seams = kept || status == Status::ok;
  if (status == Status::ok) return {};
  return ErrorWriter::write(ErrorCode::out_of_memory, "out of memory: a temporary of this frame; the panorama is incomplete");
}

StitcherSizes Stitcher::sizes() const {
  const StitchConfig& config = state_->config;
  const StitchEngine& engine = *state_->engine;
  const int32_t rows = chroma_rows(config);
  return {plane_bytes(config.in_h, config.in_luma_stride, config.in_w), plane_bytes(rows, config.in_chroma_stride, config.in_w),
          plane_bytes(config.in_h, config.out_luma_stride[0], config.out_w[0]),
          plane_bytes(rows, config.out_chroma_stride[0], config.out_w[0]),
          static_cast<std::size_t>(engine.mem_info->size) + engine.blend_mem[0]->size + engine.blend_mem[1]->size};
}

BandView Stitcher::band(int index) const {
  if (index != 0 && index != 1) return {};
  const BlendImage& mask = state_->engine->blend[index]->mask;
  const int first_column = static_cast<int>(layout_of(state_->config).pair_columns[index]);
  return {first_column, mask.width, mask.height, mask.data[0], mask.stride, mask.steps[0]};
}

std::size_t Stitcher::seams_size() const {
  const StitchEngine& engine = *state_->engine;
  return mask_samples(engine.blend[0]->mask) + mask_samples(engine.blend[1]->mask);
}

Error Stitcher::save_seams(const SeamBuffer& to) const {
  if (!state_->has_seams) return ErrorWriter::write(ErrorCode::invalid_seams, "no seams to save: no frame was stitched yet");
  if (Error error = check_plane("to.bytes", to.bytes, seams_size())) return error;
  std::uint8_t* at = to.bytes.data();
  for (const BlendInstance* blend : state_->engine->blend) at = save_mask(blend->mask, at);
  return {};
}

Error Stitcher::load_seams(const SavedSeams& from) {
  if (from.bytes.size() != seams_size()) {
    return ErrorWriter::write(ErrorCode::invalid_seams, "seams of %zu bytes: must be of %zu, as this stitcher's are",
                              from.bytes.size(), seams_size());
  }
  if (from.bytes.data() == nullptr) return ErrorWriter::write(ErrorCode::invalid_seams, "seams are null");
  for (const std::uint8_t weight : from.bytes) {
    if (weight > BISEAM_WEIGHT_ONE) {
      return ErrorWriter::write(ErrorCode::invalid_seams, "seams with a weight of %d: must be %d or less", weight,
                                BISEAM_WEIGHT_ONE);
    }
  }
  const std::uint8_t* at = from.bytes.data();
  for (BlendInstance* blend : state_->engine->blend) at = load_mask(at, blend->mask);
  state_->has_seams = true;
  return {};
}

void Stitcher::release(State* state) {
  if (state == nullptr) return;
  if (state->engine != nullptr) destroy_engine(state->engine);
  std::free(state);
}

}  // namespace biseam
