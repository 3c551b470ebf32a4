// From what is known of a camera and the size of its pictures to what an engine is opened with.
#pragma once

#include <string>

#include "base/size.hpp"
#include "biseam/panorama.h"
#include "profile/settings.hpp"

namespace biseam::tool {

struct Setup {
  BiseamCamera camera;           // of the recorded pictures
  int width = 0;                 // of the panorama, which is half as high
  profile::BlendSettings blend;  // in columns of this width
  std::string profile;           // path, or empty
};

// profile: path of a camera profile, or empty; given: what replaces its values; recorded: the sizes of both pictures.
// Tells in notices what was assumed.
Setup make_setup(const std::string& profile, const profile::CameraSettings& given, const Size (&recorded)[2]);

}  // namespace biseam::tool
