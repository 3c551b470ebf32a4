// What a run of `biseam stitch` is to do, settled.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/size.hpp"
#include "clip/read/part_reader.hpp"
#include "clip/write/encoder.hpp"
#include "clip/write/raw_writer.hpp"
#include "media/lens_streams.hpp"
#include "picture/split.hpp"
#include "profile/settings.hpp"
#include "stitch/engine.hpp"

namespace biseam::tool {

// What is stitched, by which camera and which engine.
struct StitchSource {
  std::vector<std::string> files;  // one with both circles, or one for each lens; "-" is standard input
  Layout layout = Layout::automatic;
  StreamChoice streams;              // of one file
  std::optional<Size> raw_size;      // given: NV12 without a head
  std::string profile;               // path, or empty
  bool finds_camera = false;         // where there is no profile
  std::string save_camera;           // where what was found goes; empty: nowhere
  profile::CameraSettings settings;  // in place of the profile's values
  EngineOptions engine;
};

struct PictureJob {
  StitchSource source;
  std::string output, show_seams, seam_layer;  // the last two: empty where they are not wanted
  bool metadata_360 = true;
};

struct ClipJob {
  StitchSource source;
  AVRational raw_rate{0, 1};  // frames per second of raw input
  std::int64_t offset = 0;    // microseconds, added to the times of the second clip
  PartRange part;
  bool strict = false;  // damage ends the run
  int seam_hold = 1;
  std::string output, json;  // json: empty where no summary is wanted
  std::string analysis;      // to follow; empty: none
  EncoderSettings encoder;
  RawKind raw_kind = RawKind::nv12;  // where the output is no container
  bool drop_streams = false, metadata_360 = true;
};

}  // namespace biseam::tool
