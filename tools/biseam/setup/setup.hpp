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
  bool may_lie_apart = true;     // the lenses: unless the profile says that they don't
};

// What is known of a camera before any option.
struct KnownCamera {
  profile::CameraSettings settings;
  std::string profile;  // path of where it is from, or empty
};

// Throws Failure (input, settings).
KnownCamera read_camera(const std::string& path);

// given: what replaces the camera's values; recorded: the sizes of both pictures.  Tells in notices what was assumed.
Setup make_setup(const KnownCamera& camera, const profile::CameraSettings& given, const Size (&recorded)[2]);

}  // namespace biseam::tool
