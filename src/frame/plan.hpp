#pragma once

#include "base/panorama_layout.hpp"
#include "biseam/records.h"

namespace biseam {

// What is decided about the frames of a configured engine: once a frame, here, and read by all of its stages.
struct FramePlan {
  bool can_be_stitched;  // its formats can, and the configuration is still the one that the engine was carved for
  PanoramaLayout layout;
  int rows;          // that tables, bands and panorama all have
  int format;        // the bands', as the converters know it
  bool by_bytes[2];  // whether the bands of an overlap become bytes and are blended as such; else as 32-bit images
};

FramePlan plan_frame(const StitchEngine& engine);

}  // namespace biseam
