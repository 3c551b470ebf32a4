#pragma once

#include "base/memory_report.hpp"
#include "base/status.hpp"
#include "biseam/records.h"
#include "stages/blend/module.hpp"
#include "stages/lens/remap.hpp"

namespace biseam {

struct FisheyePlanes {
  uint8_t* luma;
  uint8_t* chroma;
};

// One frame through remap, conversion, blending, composition, flip and mirror; prints nothing.  Planes have the configuration's
// sizes and strides.  no_memory: a temporary could not be had and the panorama is incomplete.
Status process_frame(StitchEngine& engine, const FisheyePlanes fisheye[2], const FisheyePlanes& panorama,
                     SampleRegion sample = sample_region, MemoryReport report = nullptr, Weights weights = Weights::made);

}  // namespace biseam
