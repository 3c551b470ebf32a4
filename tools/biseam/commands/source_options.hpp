// Options of the commands that read clips for panoramas.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "commands/stitch_options.hpp"

namespace biseam::tool {

inline constexpr const char* kCameraGroup = "Camera (in place of the profile's values)";
inline constexpr const char* kVideoGroup = "Video";

// One of the options that are given and of a kind, with its dashes; empty: there is none.
std::string given_option(const CLI::App& command, const std::function<bool(const CLI::Option&)>& is_of_kind);
std::string given_in_group(const CLI::App& command, const std::string& group);

// What is read, how it holds the circles, which camera took it, and the panorama's width.
void add_source_options(CLI::App& command, StitchOptions& options);
void add_camera_options(CLI::App& command, StitchOptions& options);

// Light, near things, and whether seams are searched.
void add_matching_options(CLI::App& command, StitchOptions& options, const char* group);

// Which part of a clip is wanted and how it is read; how steady seams are.
void add_clip_options(CLI::App& command, VideoOptions& video);

}  // namespace biseam::tool
