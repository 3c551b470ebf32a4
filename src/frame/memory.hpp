#pragma once

#include <cstdint>

#include "base/arena.hpp"
#include "base/status.hpp"
#include "biseam/records.h"

namespace biseam {

// The strip and band widths of the panorama, stored into the engine.  mismatch: a width is negative or leaves 32 bits.
Status derive_geometry(const StitchConfig& config, StitchEngine& engine);

// Bytes of working memory; the buffer is set to null.  A customary size leaves 32 bits as it may.
void size_engine_memory(const StitchConfig& config, EngineMemInfo& info);

// Bytes with room for every piece; of configurations whose widths and rows are positive.
int64_t engine_room(const StitchConfig& config);

// Hands out the working buffer to tables, bands and panorama.  no_memory: some piece did not fit.
Status carve_engine(StitchEngine& engine);

}  // namespace biseam
