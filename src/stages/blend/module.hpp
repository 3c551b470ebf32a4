#pragma once

#include "base/memory_report.hpp"
#include "base/status.hpp"
#include "biseam/records.h"
#include "frame/blend/row_sink.hpp"

namespace biseam {

// Sizes one instance's block; the base is set to null.
void size_blend_memory(const BlendConfig& config, BlendMemory& memory);

// Carves an instance out of its zero-filled block.  no_memory: some piece did not fit and the instance must not be used.
Status create_blend(const BlendConfig& config, const BlendMemory& memory, BlendInstance& instance);

// Writes every image record of the instance.
void layout_blend(BlendInstance& instance);

// Where the weights of a frame come from: they are made for it, by a search or a straight cut, or stay as they are.
enum class Weights { made, kept };

// One frame of one band.  no_memory: a temporary could not be had; output is undefined, the instance stays usable.  The
// sink, if there is one, gets either all rows of a frame, and then the output stays as it was, or none.
Status blend_band(BlendInstance& instance, const BlendImage& source1, const BlendImage& source2, BlendImage& output,
                  MemoryReport report = nullptr, Weights weights = Weights::made, const RowSink* sink = nullptr);

// The same for sources that lie in the levels 0 of their pyramids as bytes, widened, where can_be_streamed allows for it.
// mismatch: some weight is above 64 or negative, and nothing but the weights and levels has been written.
Status blend_bytes(BlendInstance& instance, BlendImage& output, MemoryReport report, Weights weights, const RowSink* sink);

}  // namespace biseam
