#pragma once

#include "biseam/records.h"

namespace biseam {

// The pyramids of an instance.
enum Pyramids { kSource1, kSource2, kMask, kBlended };

// A level, or the top behind the last one.
inline BlendImage& level_of(BlendInstance& instance, int pyramid, int k) {
  return k < instance.pyr_level ? instance.levels[pyramid][k] : instance.top[pyramid];
}

}  // namespace biseam
