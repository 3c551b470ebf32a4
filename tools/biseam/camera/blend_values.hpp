#pragma once

#include "camera/lens.hpp"
#include "profile/settings.hpp"

namespace biseam::tool {

// BlendSettings with every value settled.
struct BlendValues {
  int feather, trans_width, pyr_level;
  bool search;
  int findpath_width;
  double inv_scale;
};

// worse: the lens that sees less far along the horizon.  What is left open goes with what is given: the search shrinks its
// pictures by no more than its strip allows, and is left out, with a notice, where the feather leaves it no strip.  Throws
// Failure (settings) when the feather is left open and the lenses overlap by too little for one.
BlendValues settle_blend(const profile::BlendSettings& settings, int width, const Lens& worse);

}  // namespace biseam::tool
