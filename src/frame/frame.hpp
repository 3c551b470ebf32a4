#pragma once

#include "base/memory_report.hpp"
#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

struct FisheyePlanes {
  uint8_t* luma;
  uint8_t* chroma;
};

// Where the weights of a frame come from: they are made for it, by a search or a straight cut, or stay as they are.
enum class Weights { made, kept };

struct FrameOptions {
  MemoryReport report = nullptr;  // told what memory could not be had
  Weights weights = Weights::made;
};

// One frame through remap, conversion, blending, composition, flip and mirror; prints nothing.  Planes have the configuration's
// sizes and strides.  no_memory: a temporary could not be had and the panorama is incomplete.  mismatch: the configuration's
// formats can't be stitched; the panorama is as it was.
Status process_frame(StitchEngine& engine, const FisheyePlanes fisheye[2], const FisheyePlanes& panorama,
                     const FrameOptions& options = {});

}  // namespace biseam
