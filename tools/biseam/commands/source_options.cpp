#include "commands/source_options.hpp"

#include "commands/layout_options.hpp"
#include "commands/most_frames.hpp"

namespace biseam::tool {

void add_source_options(Command& command, StitchOptions& options) {
  const auto add = [&](const char* name, Target value, const char* type, const char* text) {
    return command.option(name, value, text).type(type);
  };
  add_layout_options(command, options.layout, options.streams);
  add("--size", &options.size, "WIDTHxHEIGHT", "of raw NV12 input");
  add("--camera", &options.camera, "FILE|none",
      "profile of the camera (TOML); none: don't look for the camera in the pictures");
  add("--save-camera", &options.save_camera, "FILE", "keep the profile of the camera that is found");
  add("--width", &options.settings.width, "COLUMNS",
      "of the panorama, a multiple of 8 (the profile's, or twice a picture's height)");
}

void add_camera_options(Command& command, StitchOptions& options) {
  profile::CameraSettings& settings = options.settings;
  const auto add = [&](const char* name, Target value, const char* type, const char* text) {
    command.option(name, value, text).type(type).group(kCameraGroup);
  };
  add("--centre0", &options.centre[0], "X,Y", "lens 0's axis in its picture, pixels");
  add("--centre1", &options.centre[1], "X,Y", "lens 1's axis in its picture");
  add("--p0", &settings.lens[0].p, "PIXELS", "pixels per radian of lens 0");
  add("--p1", &settings.lens[1].p, "PIXELS", "pixels per radian of lens 1");
  add("--fov", &settings.lens[0].fov, "DEGREES", "across the image circle of both lenses (195)");
  add("--mount0", &settings.lens[0].mount, "DEGREES",
      "recorded picture 0 is turned clockwise by 0, 90 (its sky is at the right), 180, 270");
  add("--mount1", &settings.lens[1].mount, "DEGREES", "the same of picture 1");
  add("--turn1", &options.turn, "YAW,PITCH,ROLL", "of lens 1 against lens 0, degrees: right, up, clockwise");
}

void add_matching_options(Command& command, StitchOptions& options, const char* group) {
  command.choice("--light", &options.engine.light, {"off", "match"}, "match the light of the lenses where they meet (match)")
      .type("off|match")
      .group(group);
  command
      .option("--near", &options.engine.near,
              "bring things together that are near where the lenses meet (on, unless the profile's baseline is 0)")
      .type("on|off")
      .group(group);
  std::optional<bool>& search = options.settings.blend.search;
  command.flag("--search", &search, true, "search a seam where both lenses see (default)").group(group);
  command.flag("--no-search", &search, false, "cut straight instead").group(group);
}

void add_clip_options(Command& command, VideoOptions& video) {
  const auto add = [&](const char* name, Target value, const char* type, const char* text) {
    return command.option(name, value, text).type(type).group(kVideoGroup);
  };
  add("--rate", &video.rate, "FPS", "of raw NV12 input, which then is a clip");
  add("--offset", &video.offset, "SECONDS", "added to the times of the second clip");
  add("--jobs", &video.jobs, "N", "threads that stitch (one for each processor)").whole_number(1, 64);
  add("--from", &video.from, "TIME",
      "first moment that is wanted, seconds or [HH:]MM:SS[.frac]; times of a stitched part count from it");
  add("--to", &video.to, "TIME", "first moment that is not wanted any more");
  add("--frames", &video.frames, "N", "at most so many frames").whole_number(1, kMostFrames);
  command
      .choice("--seams", &video.seams, {"free", "steady"},
              "search every frame's anew, or keep to where the last ones' are (steady, free with --seam-hold)")
      .type("free|steady")
      .group(kVideoGroup);
  command.flag("--strict", &video.strict, "stop at damage in place of repeating the previous frame").group(kVideoGroup);
}

}  // namespace biseam::tool
