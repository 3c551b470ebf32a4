#pragma once

#include <string>
#include <vector>

#include "scene/shooting.hpp"

namespace biseam::scene {

// How each frame was taken, as JSON: the camera's attitude in degrees, both lenses' factors of red, green and blue in linear
// light, and what lens 0 has of falloff and flare.  seconds: the frames' times.
std::string truth_text(const Rig& rig, const std::vector<double>& seconds);

}  // namespace biseam::scene
