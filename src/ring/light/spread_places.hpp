// Values between places that lie in a row.
#pragma once

#include <cstdint>

#include "base/variants.hpp"
#include "ring/light/match_place.hpp"

namespace biseam::ring {

// From a value of the row's first place on, or from two of them, whose results take turns; neighbours differ by less than 2^15.
// Places are 2^bits steps apart, at most 2^14.
struct PlaceRow {
  const int16_t *first, *second;  // second: null for one value
  int bits, start, step_bits;
};
// Values start steps right of the first place and each other 2^step_bits further: count, or count pairs.  Linear, rounded half
// up.
using SpreadPlaces = void(const PlaceRow& row, int16_t* out, int count) noexcept;

extern constinit const Variants<SpreadPlaces> kSpreadPlaces;

}  // namespace biseam::ring
