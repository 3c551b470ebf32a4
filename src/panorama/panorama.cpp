// The exported functions of biseam/panorama.h.
#include "biseam/panorama.h"

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "camera/rules.hpp"
#include "panorama/picture_rules.hpp"
#include "panorama/records.hpp"
#include "ring/engine.hpp"
#include "ring/guide/smooth.hpp"
#include "ring/pool.hpp"

struct BiseamPanorama {
  biseam::Camera camera;
  BiseamPanoramaOptions options;
  biseam::ring::Engine* engine;
};

namespace {

using biseam::read_record;
using biseam::report;

constexpr BiseamErrorCode kInvalidOptions = BISEAM_INVALID_OPTIONS;

biseam::Turn turn_of(const BiseamTurn& turn) { return {turn.yaw, turn.pitch, turn.roll}; }

biseam::Lens lens_of(const BiseamLens& lens) {
  return {.width = lens.width,
          .height = lens.height,
          .cx = lens.cx,
          .cy = lens.cy,
          .p = lens.p,
          .k = {lens.k[0], lens.k[1], lens.k[2]},
          .fov = lens.fov,
          .mount = lens.mount,
          .turn = turn_of(lens.turn),
          .vignette = {lens.vignette[0], lens.vignette[1]},
          .gain = {lens.gain[0], lens.gain[1], lens.gain[2]}};
}

int32_t check_side(BiseamError* error, const char* field, int32_t value, int32_t least, int32_t most) {
  if (value >= least && value <= most && value % 2 == 0) return BISEAM_OK;
  return report(error, kInvalidOptions, "%s is %d: must be even, from %d to %d", field, value, least, most);
}

int32_t check_range(BiseamError* error, const char* field, int32_t value, int32_t least, int32_t most) {
  if (value >= least && value <= most) return BISEAM_OK;
  return report(error, kInvalidOptions, "%s is %d: must be from %d to %d", field, value, least, most);
}

int32_t check_options(const BiseamPanoramaOptions& options, BiseamError* error) {
  if (const int32_t code = check_side(error, "width", options.width, 64, 16384)) return code;
  if (const int32_t code = check_side(error, "height", options.height, 32, 8192)) return code;
  if (const int32_t code = check_range(error, "format", options.format, BISEAM_NV12, BISEAM_GBRP12)) return code;
  if (const int32_t code = check_range(error, "quality", options.quality, BISEAM_QUALITY_FAST, BISEAM_QUALITY_BEST))
    return code;
  if (const int32_t code = check_range(error, "seam", options.seam, BISEAM_SEAM_SEARCH, BISEAM_SEAM_STEADY)) return code;
  if (const int32_t code = check_range(error, "threads", options.threads, 0, biseam::ring::kMostThreads)) return code;
  if (const int32_t code = check_range(error, "range", options.range, BISEAM_RANGE_USUAL, BISEAM_RANGE_FULL)) return code;
  if (const int32_t code = check_range(error, "light", options.light, BISEAM_LIGHT_OFF, BISEAM_LIGHT_MATCH)) return code;
  if (const int32_t code = check_range(error, "transfer", options.transfer, BISEAM_TRANSFER_USUAL, BISEAM_TRANSFER_LOG)) {
    return code;
  }
  if (const int32_t code = check_range(error, "near", options.near, BISEAM_NEAR_OFF, BISEAM_NEAR_MATCH)) return code;
  if (options.rate >= 1 && options.rate <= 1000) return BISEAM_OK;
  return report(error, kInvalidOptions, "rate is %g: must be from 1 to 1000 frames a second", options.rate);
}

// A view may be turned any number of times; NaN and infinity are none.
int32_t check_turn(BiseamError* error, const char* field, double degrees) {
  constexpr double kMost = 1e6;
  if (degrees >= -kMost && degrees <= kMost) return BISEAM_OK;
  return report(error, kInvalidOptions, "turn.%s is %g: must be from %g to %g degrees", field, degrees, -kMost, kMost);
}

int32_t check_seam(BiseamError* error, const double* seam, int length) {
  constexpr double kMost = 90;
  for (int i = 0; seam != nullptr && i < length; ++i) {
    if (seam[i] >= -kMost && seam[i] <= kMost) continue;
    return report(error, kInvalidOptions, "seam[%d] is %g: must be from %g to %g degrees", i, seam[i], -kMost, kMost);
  }
  return BISEAM_OK;
}

// name: of the field, with the guide's index where it is one of many.
int32_t check_guide(BiseamError* error, const char* name, const biseam::ring::GuideShape& shape, const void* guide) {
  switch (biseam::ring::check_guide(shape, guide)) {
    case biseam::ring::GuideTrouble::none:
      return BISEAM_OK;
    case biseam::ring::GuideTrouble::other:
      return report(error, kInvalidOptions, "%s is of another version, camera or choice of options", name);
    case biseam::ring::GuideTrouble::damaged:
      break;
  }
  return report(error, kInvalidOptions, "%s is damaged", name);
}

int32_t check_guide(BiseamError* error, const BiseamFrame& frame, const biseam::ring::GuideShape& shape) {
  if (frame.guide == nullptr) return BISEAM_OK;
  const size_t wanted = guide_bytes(shape);
  if (frame.guide_size == wanted) return check_guide(error, "guide", shape, frame.guide);
  return report(error, kInvalidOptions, "guide_size is %llu: must be %zu", static_cast<unsigned long long>(frame.guide_size),
                wanted);
}

int32_t check_frame(const BiseamFrame* given, const biseam::ring::Engine& engine, BiseamFrame& frame, BiseamError* error) {
  constexpr uint32_t kLeastSize = offsetof(BiseamFrame, guide_size);  // guides came later
  frame = biseam_frame_defaults();
  if (given == nullptr) return BISEAM_OK;
  if (!read_record(given, biseam_frame_defaults(), kLeastSize, frame)) {
    return report(error, kInvalidOptions, "frame.size is %u: must be %zu, as biseam_frame_defaults gives it", given->size,
                  sizeof(BiseamFrame));
  }
  if (const int32_t code = check_turn(error, "yaw", frame.turn.yaw)) return code;
  if (const int32_t code = check_turn(error, "pitch", frame.turn.pitch)) return code;
  if (const int32_t code = check_turn(error, "roll", frame.turn.roll)) return code;
  if (const int32_t code = check_seam(error, frame.seam, seam_length(engine))) return code;
  return check_guide(error, frame, guide_shape(engine));
}

int processors() {
  const long count = sysconf(_SC_NPROCESSORS_ONLN);
  return count < 1 ? 1 : count > biseam::ring::kMostThreads ? biseam::ring::kMostThreads : static_cast<int>(count);
}

bool is_usually_full(int32_t format) {
  return format == BISEAM_GRAY8 || format == BISEAM_GBR || format == BISEAM_GBRP10 || format == BISEAM_GBRP12;
}

biseam::ring::EngineConfig engine_config(const biseam::Camera& camera, const BiseamPanoramaOptions& options) {
  return {.camera = camera,
          .width = options.width,
          .height = options.height,
          .format = options.format,
          .full_range =
              options.range == BISEAM_RANGE_FULL || (options.range == BISEAM_RANGE_USUAL && is_usually_full(options.format)),
          .quality = static_cast<biseam::ring::Quality>(options.quality),
          .seam = options.seam == BISEAM_SEAM_MIDDLE ? biseam::ring::SeamMode::middle : biseam::ring::SeamMode::search,
          .threads = options.threads == 0 ? processors() : options.threads,
          .steady_seam = options.seam == BISEAM_SEAM_STEADY,
          .match_light = options.light == BISEAM_LIGHT_MATCH,
          .match_near = options.near == BISEAM_NEAR_MATCH,
          .transfer = static_cast<biseam::ring::Transfer>(options.transfer),
          .rate = options.rate};
}

int32_t report_no_handle(BiseamError* error) {
  return report(error, kInvalidOptions, "panorama is NULL: must be what biseam_panorama_open gave");
}

int32_t check_fisheyes(const BiseamPanorama& panorama, const BiseamPicture* fisheyes, biseam::ring::PicturePlanes (&planes)[2],
                       BiseamError* error) {
  constexpr const char* kNames[] = {"fisheyes[0]", "fisheyes[1]"};
  for (int k = 0; k < 2; ++k) {
    const biseam::Lens& lens = panorama.camera.lens[k];
    if (const int32_t code = biseam::check_picture(fisheyes == nullptr ? nullptr : &fisheyes[k], kNames[k],
                                                   panorama.options.format, lens.width, lens.height, planes[k], error)) {
      return code;
    }
  }
  if (planes[0].siting == planes[1].siting) return BISEAM_OK;
  return report(error, BISEAM_INVALID_PICTURE, "fisheyes[1].siting is %d: must be that of fisheyes[0], %d", planes[1].siting,
                planes[0].siting);
}

}  // namespace

BiseamPanoramaOptions biseam_panorama_defaults(void) {
  return {.size = sizeof(BiseamPanoramaOptions),
          .width = 3840,
          .height = 1920,
          .format = BISEAM_NV12,
          .quality = BISEAM_QUALITY_GOOD,
          .seam = BISEAM_SEAM_SEARCH,
          .threads = 0,
          .range = BISEAM_RANGE_USUAL,
          .light = BISEAM_LIGHT_OFF,
          .transfer = BISEAM_TRANSFER_USUAL,
          .rate = 30,
          .near = BISEAM_NEAR_OFF};
}

BiseamPicture biseam_picture_defaults(void) {
  return {.size = sizeof(BiseamPicture),
          .format = BISEAM_NV12,
          .width = 0,
          .height = 0,
          .siting = BISEAM_SITING_LEFT,
          .planes = {},
          .strides = {}};
}

BiseamFrame biseam_frame_defaults(void) {
  return {.size = sizeof(BiseamFrame), .turn = {0, 0, 0}, .seam = nullptr, .guide_size = 0, .guide = nullptr};
}

BiseamCamera biseam_camera_of(int32_t width, int32_t height, double fov) {
  const biseam::Lens lens = biseam::usual_lens(width, height, fov);
  const BiseamLens usual = {.width = width,
                            .height = height,
                            .mount = 0,
                            .cx = lens.cx,
                            .cy = lens.cy,
                            .p = lens.p,
                            .k = {0, 0, 0},
                            .fov = fov,
                            .turn = {0, 0, 0},
                            .vignette = {0, 0},
                            .gain = {1, 1, 1}};
  return {.size = sizeof(BiseamCamera), .lens = {usual, usual}, .baseline = 0};
}

BiseamPanorama* biseam_panorama_open(const BiseamCamera* camera, const BiseamPanoramaOptions* options, BiseamError* error) {
  BiseamCamera given;
  if (!read_record(camera, biseam_camera_of(2, 2, biseam::kUsualFov), sizeof(BiseamCamera), given)) {
    if (camera == nullptr) {
      report(error, BISEAM_INVALID_CAMERA, "camera is NULL: must be a camera");
    } else {
      report(error, BISEAM_INVALID_CAMERA, "camera.size is %u: must be %zu, as biseam_camera_of gives it", camera->size,
             sizeof(BiseamCamera));
    }
    return nullptr;
  }
  BiseamPanoramaOptions chosen;
  if (!read_record(options, biseam_panorama_defaults(), sizeof(BiseamPanoramaOptions), chosen)) {
    if (options == nullptr) {
      report(error, kInvalidOptions, "options is NULL: must be options");
    } else {
      report(error, kInvalidOptions, "options.size is %u: must be %zu, as biseam_panorama_defaults gives it", options->size,
             sizeof(BiseamPanoramaOptions));
    }
    return nullptr;
  }
  const biseam::Camera checked{.lens = {lens_of(given.lens[0]), lens_of(given.lens[1])}, .baseline = given.baseline};
  if (const biseam::CameraError wrong = biseam::check_camera(checked)) {
    report(error, BISEAM_INVALID_CAMERA, "%s", wrong.text);
    return nullptr;
  }
  if (check_options(chosen, error) != BISEAM_OK) return nullptr;
  auto* const made = static_cast<BiseamPanorama*>(std::malloc(sizeof(BiseamPanorama)));
  if (made != nullptr) {
    *made = {checked, chosen, biseam::ring::open_engine(engine_config(checked, chosen))};
    if (made->engine != nullptr) {
      report(error, BISEAM_OK, "%s", "");
      return made;
    }
  }
  std::free(made);
  report(error, BISEAM_NO_MEMORY, "memory is short for a panorama of %d x %d", chosen.width, chosen.height);
  return nullptr;
}

int32_t biseam_panorama_stitch(BiseamPanorama* panorama, const BiseamPicture fisheyes[2], const BiseamPicture* picture,
                               const BiseamFrame* frame, BiseamError* error) {
  if (panorama == nullptr) return report_no_handle(error);
  const BiseamPanoramaOptions& options = panorama->options;
  biseam::ring::PicturePlanes planes[2], to;
  if (const int32_t code = check_fisheyes(*panorama, fisheyes, planes, error)) return code;
  if (const int32_t code =
          biseam::check_picture(picture, "panorama", options.format, options.width, options.height, to, error)) {
    return code;
  }
  BiseamFrame checked;
  if (const int32_t code = check_frame(frame, *panorama->engine, checked, error)) return code;
  biseam::ring::stitch(*panorama->engine, planes, to, {turn_of(checked.turn), checked.seam, checked.guide});
  return report(error, BISEAM_OK, "%s", "");
}

int32_t biseam_panorama_seam_length(const BiseamPanorama* panorama) {
  return panorama == nullptr ? 0 : biseam::ring::seam_length(*panorama->engine);
}

double biseam_panorama_ring(const BiseamPanorama* panorama) {
  return panorama == nullptr ? 0 : biseam::ring::ring_degrees(*panorama->engine);
}

void biseam_panorama_seam(const BiseamPanorama* panorama, double* seam) {
  if (panorama != nullptr) biseam::ring::read_seam(*panorama->engine, seam);
}

size_t biseam_panorama_state_size(const BiseamPanorama* panorama) {
  return panorama == nullptr ? 0 : state_bytes(state_of(*panorama->engine));
}

void biseam_panorama_save(const BiseamPanorama* panorama, void* state) {
  if (panorama != nullptr) save_state(state_of(*panorama->engine), state);
}

int32_t biseam_panorama_load(BiseamPanorama* panorama, const void* state, size_t size, BiseamError* error) {
  if (panorama == nullptr) return report_no_handle(error);
  if (state == nullptr) return report(error, kInvalidOptions, "state is NULL: must be what biseam_panorama_save gave");
  const size_t wanted = state_bytes(state_of(*panorama->engine));
  if (size != wanted) return report(error, kInvalidOptions, "state has %zu bytes: must be %zu", size, wanted);
  if (!load_state(state_of(*panorama->engine), state)) {
    return report(error, kInvalidOptions, "state is of another version, camera or choice of options");
  }
  return report(error, BISEAM_OK, "%s", "");
}

void biseam_panorama_reset(BiseamPanorama* panorama) {
  if (panorama != nullptr) forget(state_of(*panorama->engine));
}

int32_t biseam_panorama_history(const BiseamPanorama* panorama) {
  return panorama == nullptr ? 0 : history(state_of(*panorama->engine));
}

size_t biseam_panorama_guide_size(const BiseamPanorama* panorama) {
  return panorama == nullptr ? 0 : guide_bytes(guide_shape(*panorama->engine));
}

int32_t biseam_panorama_measure(BiseamPanorama* panorama, const BiseamPicture fisheyes[2], void* guide, BiseamError* error) {
  if (panorama == nullptr) return report_no_handle(error);
  biseam::ring::PicturePlanes planes[2];
  if (const int32_t code = check_fisheyes(*panorama, fisheyes, planes, error)) return code;
  if (guide == nullptr) return report(error, kInvalidOptions, "guide is NULL: must be room for a guide");
  biseam::ring::measure(*panorama->engine, planes, guide);
  return report(error, BISEAM_OK, "%s", "");
}

int32_t biseam_panorama_guide_reach(const BiseamPanorama* panorama) {
  return panorama == nullptr ? 0 : guide_reach(guide_shape(*panorama->engine));
}

int32_t biseam_panorama_smooth(const BiseamPanorama* panorama, const void* const* guides, int32_t count, int32_t index,
                               void* smoothed, BiseamError* error) {
  if (panorama == nullptr) return report_no_handle(error);
  if (guides == nullptr) return report(error, kInvalidOptions, "guides is NULL: must be guides");
  if (smoothed == nullptr) return report(error, kInvalidOptions, "smoothed is NULL: must be room for a guide");
  if (index < 0 || index >= count) {
    return report(error, kInvalidOptions, "index is %d: must be one of %d guides", index, count);
  }
  const biseam::ring::GuideShape shape = guide_shape(*panorama->engine);
  const int32_t reach = guide_reach(shape), first = index > reach ? index - reach : 0;
  const int32_t end = count - index > reach ? index + reach + 1 : count;
  for (int32_t i = first; i < end; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "guides[%d]", i);
    if (guides[i] == nullptr) return report(error, kInvalidOptions, "%s is NULL: must be a guide", name);
    if (const int32_t code = check_guide(error, name, shape, guides[i])) return code;
  }
  smooth_guide(shape, guides + first, end - first, index - first, smoothed);
  return report(error, BISEAM_OK, "%s", "");
}

size_t biseam_panorama_memory(const BiseamPanorama* panorama) {
  return panorama == nullptr ? 0 : sizeof(BiseamPanorama) + biseam::ring::engine_bytes(*panorama->engine);
}

void biseam_panorama_close(BiseamPanorama* panorama) {
  if (panorama == nullptr) return;
  biseam::ring::close_engine(panorama->engine);
  std::free(panorama);
}
