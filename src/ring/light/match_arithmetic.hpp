// Arithmetic in 16 bits that rows of matched light share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/loop_versions.hpp"
#include "ring/light/match_rows.hpp"

namespace biseam::ring {

// a share / 2^15, rounded half up, in the form that compilers know as one instruction.
BISEAM_TERM int16_t product(int16_t a, int16_t share) { return static_cast<int16_t>((((a * share) >> 14) + 1) >> 1); }

BISEAM_TERM int16_t lesser(int16_t a, int16_t b) { return a < b ? a : b; }
BISEAM_TERM int16_t greater(int16_t a, int16_t b) { return a > b ? a : b; }
BISEAM_TERM int16_t sum(int16_t a, int16_t b) { return static_cast<int16_t>(a + b); }
BISEAM_TERM int16_t difference(int16_t a, int16_t b) { return static_cast<int16_t>(a - b); }

// Twice the value, as what products take.
BISEAM_TERM int16_t value_at(const ValueRows& rows, int16_t below, ptrdiff_t i) {
  const int16_t upper = rows.upper[i];
  return static_cast<int16_t>(2 * sum(upper, product(difference(rows.lower[i], upper), below)));
}

BISEAM_TERM int16_t below_at(const ValueRows& values, int row) {
  return static_cast<int16_t>(values.below + row / kSharedRows * values.step);
}

// A third of the slope from here on leads f > 1 to white.
BISEAM_TERM int16_t shoulder(const Tone& tone, int16_t more) {
  const int16_t white = static_cast<int16_t>(tone.white), range = static_cast<int16_t>(tone.white - tone.pivot);
  return difference(white, greater(0, product(range, static_cast<int16_t>(more >> 1))));
}

}  // namespace biseam::ring
