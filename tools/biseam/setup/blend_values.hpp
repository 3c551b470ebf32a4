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

// How far from its axis a lens sees along the horizon, on the shorter side.
struct LensReach {
  int index;
  double degrees;
  bool is_cut;  // by the picture's edge, not by the circle's
  double p;     // pixels per radian
};

// The exact engine's.  worse: the lens that sees less far.  What is left open goes with what is given: the search shrinks its
// pictures by no more than its strip allows, and is left out, with a notice, where the feather leaves it no strip.  Throws
// Failure (settings) when the feather is left open and the lenses overlap by too little for one.
BlendValues settle_blend(const profile::BlendSettings& settings, int width, const LensReach& worse);

}  // namespace biseam::tool
