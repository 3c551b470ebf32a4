// `biseam stitch` on clips.
#pragma once

#include <memory>

#include "base/failure.hpp"
#include "media/container.hpp"
#include "stitch/job.hpp"

namespace biseam::tool {

// first: the first input, if it was opened already.  Gives the exit code: done, or interrupted after Ctrl-C or TERM, when what
// was in flight is finished.  Throws Failure and leaves no output, on a read error too; a clip that only ends too early is
// stitched as far as it goes, with a notice.
ExitCode stitch_clip(const ClipJob& job, std::unique_ptr<Container> first);

}  // namespace biseam::tool
