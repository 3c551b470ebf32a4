#pragma once

#include <cstdint>

#include "base/memory_report.hpp"
#include "base/status.hpp"
#include "biseam/records.h"

// One band's blend, by its definition: stage by stage over whole images, each of which an instance keeps.  A frame comes to the
// same bytes on a shorter way.
namespace biseam {

// Sizes one instance's block; the base is set to null.
void size_blend_memory(const BlendConfig& config, BlendMemory& memory);

// Bytes of a block with room for every piece.
int64_t blend_room(const BlendConfig& config);

// A length in the shrunk images of the search: divided as floats, truncated.
int shrunk(int size, float inv_scale);

// Carves an instance out of its zero-filled block and copies its settings, which are not read again.  no_memory: some piece did
// not fit, or its size is negative, as with a negative level count; the instance is of no size then.
Status create_blend(const BlendConfig& config, const BlendMemory& memory, BlendInstance& instance);

// Writes every image record of the instance.
void layout_blend(BlendInstance& instance);

// The instance's mask for two sources: cut along what they show where the search is enabled, else straight in the middle.
// Weights of earlier frames stay.  no_memory: the mask may be that of the frame before.
Status make_mask(BlendInstance& instance, const BlendImage* const sources[2], MemoryReport report = nullptr);

// Blends two sources under the mask there is.  no_memory: output is undefined, the instance stays usable.
Status blend_under_mask(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& output);

// Both.  An instance that could not be carved blends nothing: no_memory.
Status blend_band(BlendInstance& instance, const BlendImage* const sources[2], BlendImage& output,
                  MemoryReport report = nullptr);

// Column of the shrunk band at which the shrunk strips start.
int strip_column(const BlendInstance& instance);

}  // namespace biseam
