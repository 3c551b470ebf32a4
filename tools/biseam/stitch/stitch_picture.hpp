// `biseam stitch` on pictures.
#pragma once

#include <memory>

#include "media/container.hpp"
#include "stitch/job.hpp"

namespace biseam::tool {

// first: the first input, if it was opened already.  Throws Failure.
void stitch_picture(const PictureJob& job, std::unique_ptr<Container> first);

}  // namespace biseam::tool
