#include "commands/stitch_options.hpp"

#include <charconv>
#include <cstdio>

#include "base/failure.hpp"
#include "commands/layout_options.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "text/time_text.hpp"

namespace biseam::tool {
namespace {

using namespace profile;

constexpr Limits kLookLimits{-360, 360};
constexpr const char* kNoCamera = "none";

[[noreturn]] void refuse_value(const std::string& option, const std::string& rule) {
  throw Failure(ExitCode::usage, option + ": " + rule);
}

std::string range_text(Limits limits) { return std::to_string(int(limits.low)) + " to " + std::to_string(int(limits.high)); }

[[noreturn]] void refuse_number(const std::string& option, double value, const std::string& rule) {
  char text[32];
  std::snprintf(text, sizeof text, "'%.15g' ", value);
  refuse_value(option, text + rule);
}

// "1.5,-2" into the given places, which hold numbers, or may.
template <class Place>
void parse_numbers(const std::string& option, const std::string& text, std::vector<Place*> places, Limits limits) {
  const char *at = text.data(), *const end = at + text.size();
  for (std::size_t k = 0; k < places.size(); ++k) {
    double value = 0;
    const auto [after, error] = std::from_chars(at, end, value);
    const bool last = k + 1 == places.size();
    if (error != std::errc() || !limits.hold(value) || (last ? after != end : after == end || *after != ',')) {
      refuse_value(option, "'" + text + "': " + std::to_string(places.size()) + " numbers of " + range_text(limits) +
                               " with commas between are wanted");
    }
    *places[k] = value;
    at = after + 1;
  }
}

template <class T>
void check_limits(const char* option, const std::optional<T>& value, Limits limits) {
  if (value && !limits.hold(double(*value))) refuse_number(option, double(*value), "must be " + range_text(limits));
}

void check_lens(LensSettings& lens, const std::string& centre, char digit) {
  const std::string index(1, digit);
  if (!centre.empty()) parse_numbers<std::optional<double>>("--centre" + index, centre, {&lens.cx, &lens.cy}, kCentreLimits);
  check_limits(("--p" + index).c_str(), lens.p, kScaleLimits);
  check_limits("--fov", lens.fov, kFovLimits);
  if (lens.mount && !is_quarter_turn(*lens.mount)) refuse_number("--mount" + index, *lens.mount, "must be 0, 90, 180 or 270");
}

void check_engine(StitchOptions& options) {
  const bool is_exact = options.engine.kind == EngineKind::exact;
  const std::string& misplaced = is_exact ? options.given_ring : options.given_exact;
  if (!misplaced.empty()) refuse_value(misplaced, is_exact ? "not for --engine exact" : "only for --engine exact");
  BiseamTurn& look = options.engine.look;
  if (!options.look.empty()) parse_numbers<double>("--look", options.look, {&look.yaw, &look.pitch, &look.roll}, kLookLimits);
}

// Whoever says what the camera is like, and hosts of the exact engine, who can't have just any camera, need no search.
bool finds_camera(const StitchOptions& options) {
  return options.camera.empty() && options.given_camera.empty() && options.engine.kind == EngineKind::ring;
}

void check_save_camera(const StitchOptions& options) {
  if (options.save_camera.empty() || finds_camera(options)) return;
  const std::string& reason = !options.camera.empty() ? "--camera" : options.given_camera;
  refuse_value("--save-camera", "with " + (reason.empty() ? "--engine exact" : reason) + " no camera is looked for");
}

StitchSource source_of(const StitchOptions& options) {
  StitchSource source{options.inputs,
                      options.layout,
                      choose_streams(options.streams, options.layout, options.inputs.size(), !options.size.empty()),
                      std::nullopt,
                      {},
                      false,
                      options.save_camera,
                      options.settings,
                      options.engine};
  if (options.camera != kNoCamera) source.profile = options.camera;
  source.finds_camera = finds_camera(options);
  if (!options.size.empty()) source.raw_size = parse_size(options.size);
  return source;
}

PartRange range_of(const VideoOptions& video) {
  PartRange range;
  if (!video.from.empty()) range.from = parse_time("--from", video.from);
  if (!video.to.empty()) range.to = parse_time("--to", video.to);
  range.frames = video.frames;
  if (range.from && *range.from < 0) throw Failure(ExitCode::usage, "--from: must not be before the beginning");
  if (range.to && *range.to <= range.from.value_or(0)) throw Failure(ExitCode::usage, "--to: must be later than --from");
  return range;
}

// Uncompressed frames with y4m's headers are wanted.
bool is_y4m_output(const StitchOptions& options) {
  return options.video.format == "y4m" || options.output.ends_with(".y4m") || options.output.ends_with(".Y4M");
}

}  // namespace

void check_stitch_options(StitchOptions& options) {
  CameraSettings& settings = options.settings;
  settings.lens[1].fov = settings.lens[0].fov;
  for (int k = 0; k < 2; ++k) check_lens(settings.lens[k], options.centre[k], char('0' + k));
  LensSettings& lens1 = settings.lens[1];
  if (!options.turn.empty()) {
    parse_numbers<std::optional<double>>("--turn1", options.turn, {&lens1.yaw, &lens1.pitch, &lens1.roll}, kTurnLimits);
  }
  check_engine(options);
  if (!options.video.analysis.empty() && !options.given_settled.empty()) {
    refuse_value(options.given_settled, "not with --analysis, which has settled it");
  }
  check_save_camera(options);
  if (settings.width && !is_panorama_width(*settings.width)) {
    refuse_number("--width", *settings.width, "must be a multiple of 8, 64 to 16384");
  }
  check_limits("--feather", settings.blend.feather, kColumnLimits);
  check_limits("--trans-width", settings.blend.trans_width, kColumnLimits);
  check_limits("--pyr-level", settings.blend.pyr_level, kLevelLimits);
  check_limits("--findpath-width", settings.blend.findpath_width, kColumnLimits);
  check_limits("--inv-scale", settings.blend.inv_scale, kShrinkLimits);
  if (options.show_seams == "-") refuse_value("--show-seams", "only the panorama can go to standard output");
  if (!options.show_seams.empty()) check_picture_name(options.show_seams);
  if (!options.seam_layer.empty()) check_layer_name(options.seam_layer);
  if (options.video.json == "-" && options.output == "-") refuse_value("--json", "standard output has the frames already");
  if (options.inputs.front() == "-" && options.inputs.back() == "-" && options.inputs.size() == 2) {
    throw Failure(ExitCode::usage, "only one input can come from standard input");
  }
}

PictureJob picture_job(const StitchOptions& options) {
  return {source_of(options), options.output, options.show_seams, options.seam_layer, options.metadata_360};
}

ClipJob clip_job(const StitchOptions& options) {
  const VideoOptions& video = options.video;
  ClipJob job;
  job.part = range_of(video);
  job.source = source_of(options);
  if (job.source.raw_size) {
    if (video.rate.empty()) throw Failure(ExitCode::usage, "--rate: raw frames of a clip need their rate");
    job.raw_rate = parse_rate("--rate", video.rate);
  }
  if (!video.offset.empty()) job.offset = parse_time("--offset", video.offset);
  job.strict = video.strict;
  job.source.engine.threads = video.jobs.value_or(0);
  job.seam_hold = video.seam_hold;
  job.source.engine.steady_seams =
      video.seams.value_or(video.seam_hold > 1 ? SeamSearch::free : SeamSearch::steady) == SeamSearch::steady;
  job.output = options.output;
  job.json = video.json;
  job.analysis = video.analysis;
  job.encoder = {video.encoder, video.crf, video.preset, video.bitrate};
  job.raw_kind = is_y4m_output(options) ? RawKind::y4m : RawKind::nv12;
  job.drop_streams = video.drop_streams;
  job.metadata_360 = options.metadata_360;
  return job;
}

}  // namespace biseam::tool
