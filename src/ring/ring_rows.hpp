// From angles on the ring to strip samples.
#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/strip/shape.hpp"

namespace biseam::ring {

// In place: t, b in angles of the mesh become strip samples, Q16, sample (0, 0) at (0, 0); t in [0, length), b held within 45
// degrees of the middle.
using ToStripSamples = void(StripShape shape, int32_t* t, int32_t* b, int count) noexcept;
extern constinit const Variants<ToStripSamples> kToStripSamples;

}  // namespace biseam::ring
