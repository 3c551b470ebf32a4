// `biseam analyse`.
#pragma once

#include "stitch/job.hpp"

namespace biseam::tool {

// The job's output is an analysis.  Throws Failure and leaves no output, after Ctrl-C or TERM too.
void analyse_clip(const ClipJob& job);

}  // namespace biseam::tool
