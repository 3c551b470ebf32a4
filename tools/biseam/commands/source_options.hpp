// Options of the commands that read clips for panoramas.
#pragma once

#include "commands/stitch_options.hpp"
#include "options/command_line.hpp"

namespace biseam::tool {

inline constexpr const char* kCameraGroup = "Camera (in place of the profile's values)";
inline constexpr const char* kVideoGroup = "Video";

// What is read, how it holds the circles, which camera took it, and the panorama's width.
void add_source_options(Command& command, StitchOptions& options);
void add_camera_options(Command& command, StitchOptions& options);

// Light, near things, and whether seams are searched.
void add_matching_options(Command& command, StitchOptions& options, const char* group);

// Which part of a clip is wanted and how it is read; how steady seams are.
void add_clip_options(Command& command, VideoOptions& video);

}  // namespace biseam::tool
