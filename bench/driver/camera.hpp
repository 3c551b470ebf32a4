#pragma once

#include "biseam/panorama.h"
#include "camera/camera.hpp"
#include "driver/setup.hpp"

namespace biseam::bench {

// For the setup's pictures; ends the program when there is no such profile.
Camera make_camera(const Setup& setup);

BiseamCamera make_record(const Camera& camera);

}  // namespace biseam::bench
