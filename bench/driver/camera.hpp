#pragma once

#include "biseam/panorama.h"
#include "camera/camera.hpp"
#include "driver/setup.hpp"

namespace biseam::bench {

// The virtual camera, or a real one: a pair in which both lenses are off the middle and cut off by the pictures' edges, of
// different scale, with distortion, lens 1 turned.
Camera make_camera(const Setup& setup);

BiseamCamera make_record(const Camera& camera);

}  // namespace biseam::bench
