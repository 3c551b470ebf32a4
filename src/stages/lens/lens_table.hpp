#pragma once

#include "biseam/records.h"

namespace biseam {

// Fills the selected rows of one strip's table.  Any function of this type can stand in for build_strip.
using BuildStrip = void (*)(const LutBuilderArgs& args);
void build_strip(const LutBuilderArgs& args);

// Builds the engine's three tables on four threads.  The entries must be carved; rows past in_h are not built.
void build_tables(const StitchConfig& config, StitchEngine& engine, BuildStrip build = build_strip);

// The mapping of one panorama position by the maths library.
void map_position(float x, float y, float& u, float& v, const LensRecord& lens);

}  // namespace biseam
