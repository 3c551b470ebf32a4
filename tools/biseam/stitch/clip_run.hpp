// Reading, stitching and writing of a clip at the same time.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>

#include "stitch/clip_stitcher.hpp"

namespace biseam::tool {

struct ClipRun {
  std::function<std::optional<FramePair>()> read;  // none at the end
  std::function<StitchedFrame(FramePair)> stitch;
  std::function<void(StitchedFrame)> write;
  std::size_t most_waiting;  // frames between two of them
};

// Reads and writes in threads of their own, stitches in this one; everything in order.  Rethrows what went wrong in any of
// them, after what came before it was written.  Throws Failure (system) when a thread can't be started.
void run_clip(const ClipRun& run);

}  // namespace biseam::tool
