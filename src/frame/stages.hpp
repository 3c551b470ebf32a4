#pragma once

#include "base/status.hpp"
#include "biseam/records.h"
#include "frame/frame.hpp"
#include "frame/plan.hpp"
#include "stages/lens/remap.hpp"

namespace biseam {

// The stages of process_frame, in its order, so that each can be measured alone.  The threads of a stage end before it returns.

// Lets the engine's pictures and panorama stand for one frame's planes.
void attach_frame(StitchEngine& engine, const FisheyePlanes fisheye[2], const FisheyePlanes& panorama);

// Pictures to panorama and bands, region by region: sample_region, or what stands in for it.
void remap_stage(const StitchEngine& engine, const FramePlan& plan, SampleRegion sample);

// Bands to RGB.
void conversion_stage(StitchEngine& engine, const FramePlan& plan);

// Seam search, where the instances have it enabled and weights are made, blend of both overlaps, and back to YUV.
Status blend_stage(StitchEngine& engine, const FramePlan& plan, const FrameOptions& options);

// Blended overlaps to the panorama, then flip and mirror.
void compose_stage(StitchEngine& engine, const FramePlan& plan);

}  // namespace biseam
