#pragma once

#include "profile/settings.hpp"

namespace biseam::tool {

// BlendSettings with every value settled.
struct BlendValues {
  int feather, trans_width, pyr_level;
  bool search;
  int findpath_width;
  double inv_scale;
};

// reach: degrees off axis that the worse lens sees along the horizon.  Throws Failure (settings) when the feather is left
// open and the lenses overlap by too little for one.
BlendValues settle_blend(const profile::BlendSettings& settings, int width, double reach);

}  // namespace biseam::tool
