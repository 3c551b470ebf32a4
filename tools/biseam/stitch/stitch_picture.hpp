// `biseam stitch` on pictures.
#pragma once

#include <memory>

#include "media/container.hpp"
#include "stitch/stitch_options.hpp"

namespace biseam::tool {

// first: the first input, if it was opened already.  Throws Failure.
void stitch_picture(const StitchOptions& options, std::unique_ptr<Container> first);

}  // namespace biseam::tool
