#include "stages/lens/lens_entry.hpp"

#include <math.h>

namespace biseam {

Latitude row_latitude(const LensRecord& lens, int row) {
  const float angle = -kHalfPi + static_cast<float>(row + 1) * lens.row_step + lens.row_offset;
  double sine, cosine;
  sincos(angle, &sine, &cosine);
  return {static_cast<float>(sine), static_cast<float>(cosine)};
}

}  // namespace biseam
