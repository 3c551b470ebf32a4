#pragma once

#include "media/container.hpp"
#include "tag/tag_job.hpp"

namespace biseam::tool {

// Marks a JPEG or PNG picture, opened as source.  Throws Failure; nothing is written then.
void tag_picture(const TagJob& job, Container& source);

}  // namespace biseam::tool
