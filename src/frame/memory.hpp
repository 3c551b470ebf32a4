#pragma once

#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// The strip and band widths of the panorama, stored into the engine.  mismatch: a width is negative or leaves 32 bits.
Status derive_geometry(const StitchConfig& config, StitchEngine& engine);

// Bytes of working memory; the buffer is set to null.
void size_engine_memory(const StitchConfig& config, EngineMemInfo& info);

// Hands out the working buffer to tables, bands and panorama.  no_memory: some piece did not fit.
Status carve_engine(StitchEngine& engine);

}  // namespace biseam
