#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

#include "base/distinct_files.hpp"
#include "base/extension.hpp"
#include "base/failure.hpp"
#include "commands/commands.hpp"
#include "commands/layout_options.hpp"
#include "commands/source_options.hpp"
#include "commands/stitch_options.hpp"
#include "media/container.hpp"
#include "picture/read_picture.hpp"
#include "stitch/stitch_clip.hpp"
#include "stitch/stitch_picture.hpp"

namespace biseam::tool {
namespace {

// Whether the output is a picture, or frames of a clip; what only the input's content can tell is asked last.
enum class Road { picture, video };

bool has_extension(const std::string& path, std::initializer_list<const char*> extensions) {
  const std::string extension = extension_of(path);
  return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

Road choose_road(const StitchOptions& options, std::unique_ptr<Container>& first) {
  const std::string& output = options.output;
  if (has_extension(output, {".png", ".jpg", ".jpeg"})) return Road::picture;
  if (has_extension(output, {".mp4", ".mov", ".mkv", ".y4m"})) return Road::video;
  if (output != "-" && !has_extension(output, {".nv12"})) {
    throw Failure(ExitCode::usage, output + ": the name must end in .png, .jpg, .nv12, .mp4, .mov, .mkv or .y4m, or be -");
  }
  if (options.video.format == "y4m") return Road::video;
  if (!options.size.empty()) return options.video.rate.empty() ? Road::picture : Road::video;
  refuse_raw_name(options.inputs.front());
  first = std::make_unique<Container>(options.inputs.front());
  return first->is_picture() ? Road::picture : Road::video;
}

void check_files(const StitchOptions& options) {
  std::vector<NamedFile> inputs = {{"--camera", options.camera}, {"--analysis", options.video.analysis}};
  for (const std::string& file : options.inputs) inputs.push_back({"the input", file});
  check_distinct(inputs, {{"-o", options.output},
                          {"--show-seams", options.show_seams},
                          {"--seam-layer", options.seam_layer},
                          {"--save-camera", options.save_camera},
                          {"--json", options.video.json}});
}

ExitCode stitch(StitchOptions& options) {
  check_stitch_options(options);
  check_files(options);
  std::unique_ptr<Container> first;
  if (choose_road(options, first) == Road::video) {
    if (!options.show_seams.empty()) throw Failure(ExitCode::usage, "--show-seams: only for pictures");
    if (!options.seam_layer.empty()) throw Failure(ExitCode::usage, "--seam-layer: only for pictures");
    return stitch_clip(clip_job(options), std::move(first));
  }
  if (!options.video.given.empty()) throw Failure(ExitCode::usage, options.video.given + ": only for video");
  stitch_picture(picture_job(options), std::move(first));
  return ExitCode::done;
}

constexpr const char* kExactGroup = "Seams and blend of the exact engine (in columns of the panorama)";

void add_engine_options(Command& command, StitchOptions& options) {
  const char* const group = "Engine";
  command
      .choice("--engine", &options.engine.kind, {"ring", "exact"},
              "the sharpest picture of any camera (ring), or what hosts of the C interface get")
      .type("ring|exact")
      .group(group);
  command.choice("--quality", &options.engine.quality, {"fast", "good", "best"}, "bilinear, 4 x 4 or 6 x 6 samples (good)")
      .type("fast|good|best")
      .group(group);
  command.option("--look", &options.look, "where the panorama's middle looks, degrees: right, up, clockwise (0,0,0)")
      .type("YAW,PITCH,ROLL")
      .group(group);
  add_matching_options(command, options, group);
}

void add_exact_options(Command& command, profile::BlendSettings& blend) {
  const auto add = [&](const char* name, Target value, const char* type, const char* text) {
    command.option(name, value, text).type(type).group(kExactGroup);
  };
  add("--feather", &blend.feather, "COLUMNS", "overlap on each side of a seam (by the overlap there is)");
  add("--trans-width", &blend.trans_width, "COLUMNS", "transition of the blend (2 x feather)");
  add("--pyr-level", &blend.pyr_level, "LEVELS", "levels of the blend (by its width)");
  add("--findpath-width", &blend.findpath_width, "COLUMNS", "strip that is searched (2 x feather)");
  add("--inv-scale", &blend.inv_scale, "FACTOR", "by which the search shrinks its pictures (by the width)");
}

void add_video_options(Command& command, VideoOptions& video) {
  const auto add = [&](const char* name, Target value, const char* type, const char* text) {
    return command.option(name, value, text).type(type).group(kVideoGroup);
  };
  add("--encoder", &video.encoder, "NAME", "of libav (libx264)");
  add("--crf", &video.crf, "N", "the encoder's constant quality (18 with libx264)");
  add("--preset", &video.preset, "NAME", "the encoder's preset (medium with libx264)");
  add("--bitrate", &video.bitrate, "RATE", "bits per second, 20M for example, in place of constant quality")
      .check(
          [](const std::string& text) { return std::strtod(text.c_str(), nullptr) > 0 ? "" : "must be above 0, as 20M is"; });
  add("--format", &video.format, "y4m|nv12", "of frames on standard output (nv12)").among({"y4m", "nv12"});
  add_clip_options(command, video);
  add("--analysis", &video.analysis, "FILE", "treat light, near things and seams as analyse found best for the whole clip");
  add("--seam-hold", &video.seam_hold, "N", "search the seam in every N-th frame of the clip and keep it between (1)")
      .whole_number(1, 1000000);
  add("--json", &video.json, "FILE", "write a summary of the run as one JSON object; - is standard output");
  command.flag("--drop-streams", &video.drop_streams, "leave out streams that the output can't hold").group(kVideoGroup);
}

void note_given(const Command& command, StitchOptions& options) {
  options.video.given = command.given_in(kVideoGroup);
  options.given_camera = command.given_in(kCameraGroup);
  options.given_exact = command.given_in(kExactGroup);
  // What only one of the engines knows, whatever the group it is listed in.
  options.given_ring = command.given_of({"--quality", "--look", "--light", "--near", "--seams", "--jobs", "--analysis"});
  // What an analysis has settled.
  options.given_settled = command.given_of({"--light", "--near", "--search", "--no-search", "--seams", "--seam-hold"});
}

}  // namespace

void add_stitch_command(CommandLine& line) {
  Command& command = line.add("stitch", "stitch a pair of fisheye pictures, or all pairs of a clip");
  const auto options = std::make_shared<StitchOptions>();
  command
      .option("IN", &options->inputs,
              "picture or clip with both circles, lens 0 left or on top, or one file for each lens; - is standard input")
      .shown_as("FILE [FILE]")
      .required()
      .count(1, 2);
  const auto add = [&](const char* name, Target value, const char* type, const char* text) {
    return command.option(name, value, text).type(type);
  };
  add("-o,--output", &options->output, "FILE",
      "picture: .png, .jpg; clip: .mp4, .mov, .mkv, .y4m; raw frames: .nv12, or - for standard output")
      .required();
  add_source_options(command, *options);
  add("--show-seams", &options->show_seams, "FILE",
      "also write the picture with the joined zone and its seams painted over it");
  add("--seam-layer", &options->seam_layer, "FILE", "also write that zone and the seams alone, on transparent ground (.png)");
  command.flag("!--no-360-metadata", &options->metadata_360,
               "don't mark the result (and the picture of --show-seams) as a spherical panorama");
  add_camera_options(command, *options);
  add_engine_options(command, *options);
  add_exact_options(command, options->settings.blend);
  add_video_options(command, options->video);
  command.does([options, &command] {
    note_given(command, *options);
    return stitch(*options);
  });
}

}  // namespace biseam::tool
