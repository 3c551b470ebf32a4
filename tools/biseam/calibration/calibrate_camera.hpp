// `biseam calibrate`.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calibrate/calibrate.hpp"
#include "media/lens_streams.hpp"
#include "picture/split.hpp"

namespace biseam::tool {

struct CalibrationJob {
  std::vector<std::string> files;  // pictures, as read_picture_pairs() takes them; or a clip, or one for each lens
  Layout layout = Layout::automatic;
  StreamChoice streams;
  std::string output;          // the profile
  std::string report;          // a page that shows what was found, or empty
  std::string start;           // the profile to begin from, or empty
  calibrate::Options options;  // but for the start
  int frames = 20;             // of a clip
};

// Writes the profile and the report, and prints what is known of the camera and how well.  Throws Failure, also when the
// pictures don't tell; then nothing is written.
void calibrate_camera(const CalibrationJob& job);

}  // namespace biseam::tool
