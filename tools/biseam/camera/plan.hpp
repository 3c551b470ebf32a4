// From two lenses to an engine's configuration and what must be done to the pictures first.
#pragma once

#include "biseam/records.h"
#include "camera/lens.hpp"
#include "camera/warp.hpp"
#include "profile/settings.hpp"

namespace biseam::tool {

struct LensPlan {
  bool as_is;         // the picture fits the engine without resampling
  WarpTarget target;  // what the engine gets
  double missing;     // pixels by which the tables leave the picture; its edge stands in for them
};

struct Plan {
  StitchConfig config;
  LensPlan lens[2];
};

// The engine wants pictures as high as the panorama, half its width, and every table entry inside them.  Pictures that are
// just so stay as they are; others are resampled so that the tables fill the height.  The roll of lens 1 goes into the
// configuration's matrix, where it is exact; a matrix can't express yaw and pitch, which are taken out by resampling.
// sizes: the upright pictures.  Throws Failure (settings) when the lenses don't overlap.
Plan make_plan(const Lens (&lenses)[2], const Size (&sizes)[2], const profile::BlendSettings& blend, int width);

}  // namespace biseam::tool
