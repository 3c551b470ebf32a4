#pragma once

#include "base/arena.hpp"
#include "base/status.hpp"
#include "biseam/records.h"
#include "frame/tables/lens_tiles.hpp"
#include "stages/lens/lens_table.hpp"

namespace biseam {

// What the engine hands to its two blend instances.
BlendConfig blend_settings(const StitchConfig& config);

// Makes an engine over the caller's configuration.  no_memory: a block can't be had, or a piece does not fit; mismatch: a width
// is negative or leaves 32 bits.  Either way nothing is left allocated and engine is not written.
Status create_engine(StitchConfig& config, StitchEngine*& engine, Room room = Room::customary);

// Whether an engine was carved for the configuration's sizes.  Lens values may change, sizes may not.
bool fits_carving(const StitchConfig& config, const StitchEngine& engine);

// Builds the tables and lays out every record.  mismatch: the configuration's sizes are no longer those that the engine was
// carved for; the engine stays as it was.
Status configure_engine(StitchEngine& engine, BuildStrip build = build_strip_by_tiles);

void destroy_engine(StitchEngine* engine);

}  // namespace biseam
