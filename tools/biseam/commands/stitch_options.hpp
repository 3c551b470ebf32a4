// What the command line of `biseam stitch` says.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "picture/split.hpp"
#include "profile/settings.hpp"
#include "stitch/job.hpp"

namespace biseam::tool {

enum class SeamSearch { free, steady };

struct VideoOptions {
  std::string rate, format, offset, from, to, preset, bitrate, json, analysis;  // empty: not given
  std::string encoder = "libx264";
  std::optional<double> crf;
  std::optional<int> jobs;
  std::optional<SeamSearch> seams;
  int seam_hold = 1;
  std::optional<std::int64_t> frames;
  bool drop_streams = false, strict = false;
  std::string given;  // one of these options that was given, with its dashes
};

struct StitchOptions {
  std::vector<std::string> inputs;
  std::string output, size, camera, save_camera, show_seams, seam_layer;
  std::string centre[2], turn, look, streams;
  Layout layout = Layout::automatic;
  EngineOptions engine;
  std::string given_camera;             // one of the options that say what a camera is like, with its dashes; empty: none
  std::string given_settled;            // one of the options that an analysis has settled; empty: none
  std::string given_ring, given_exact;  // one of the options that only the one engine has, with its dashes; empty: none
  bool metadata_360 = true;
  profile::CameraSettings settings;
  VideoOptions video;
};

// What the options can't check one by one; settles the settings that are texts.  Throws Failure (usage).
void check_stitch_options(StitchOptions& options);

// The options as what they mean, once they are checked.  Both throw Failure (usage).
PictureJob picture_job(const StitchOptions& options);
ClipJob clip_job(const StitchOptions& options);

}  // namespace biseam::tool
