#pragma once

#include "media/container.hpp"
#include "tag/tag_job.hpp"

namespace biseam::tool {

// Marks the video of a clip, opened as source, and copies everything else packet by packet into a container of the given
// format.  Throws Failure; nothing is written then, nor after an interrupt.
void tag_clip(const TagJob& job, Container& source, const AVOutputFormat& format);

}  // namespace biseam::tool
