#pragma once

#include <string>

#include "scene/camera.hpp"

namespace biseam::scene {

// The virtual camera as a camera profile (TOML) for a panorama of the given width.  baseline: metres between the lenses.
std::string profile_text(const Fisheye& lens0, const Fisheye& lens1, double baseline, int panorama_width);

}  // namespace biseam::scene
