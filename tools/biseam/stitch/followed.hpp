// An analysis that a clip is stitched by: what it settles, and whether it belongs to the clip.
#pragma once

#include <cstdint>
#include <span>

#include "analysis/analysis_reader.hpp"
#include "clip/read/pair_reader.hpp"
#include "stitch/job.hpp"

namespace biseam::tool {

// The job with light, near things and seams as the analysis has them.
ClipJob settled_by(const AnalysisReader& analysis, ClipJob job);

ClipMark clip_mark(const PairReader& clips);

// Throw Failure (input) that names the analysis when it was made of another clip, or for another camera or panorama.
// guide_bytes: of the engine that is to follow it.
void check_clip(const AnalysisReader& analysis, const PairReader& clips);
void check_camera(const AnalysisReader& analysis, const Setup& setup, std::size_t guide_bytes);

// Throws Failure (input) when the analysis has none for the pair.
std::span<const std::uint8_t> guide_of(AnalysisReader& analysis, const FramePair& pair);

}  // namespace biseam::tool
