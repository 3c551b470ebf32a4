#pragma once

#include "media/container.hpp"
#include "tag/tag_job.hpp"

namespace biseam::tool {

// Marks the video of a clip, opened as source, and copies everything else packet by packet into a container of the given
// format.  Throws Failure; nothing is written then, nor after an interrupt.  A clip that is damaged, cut short, or has a stream
// that libav can't write again is refused: its copy would have lost something.
void tag_clip(const TagJob& job, Container& source, const AVOutputFormat& format);

}  // namespace biseam::tool
