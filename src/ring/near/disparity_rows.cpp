#include "ring/near/disparity_rows.hpp"

#include <cstddef>

#include "base/loop_versions.hpp"

namespace biseam::ring {

namespace {

BISEAM_LOOP void gradient_row(const int16_t* before, const int16_t* here, const int16_t* after, int16_t* gradients,
                              int width) noexcept {
  int16_t* const along = gradients + width;
  BISEAM_TURNS_APART
  for (ptrdiff_t b = 1; b < width - 1; ++b) {
    gradients[b] = static_cast<int16_t>((here[b + 1] - here[b - 1]) >> 4);
    along[b] = static_cast<int16_t>((after[b] - before[b]) >> 4);
  }
  gradients[0] = gradients[width - 1] = along[0] = along[width - 1] = 0;
}

// Of so many samples of both gradients.
BISEAM_LOOP int32_t product(const int16_t* a, const int16_t* b, int width, int count) {
  int32_t sum = 0;
  for (ptrdiff_t i = 0; i < count; ++i) sum += a[i] * b[i] + a[width + i] * b[width + i];
  return sum;
}

BISEAM_LOOP void compare_row(const int16_t* gradients0, const int16_t* gradients1, const NearShape& shape, uint32_t* apart,
                             uint32_t* both) noexcept {
  int32_t squares0 = 0, squares1 = 0;
  for (int d = 0; d < shape.disparities; ++d) {
    const int16_t *const row0 = gradients0 + shape.first + (d + 1) / 2, *const row1 = gradients1 + shape.first - d / 2;
    // From one disparity to the next one lens's columns stay.
    if (d == 0 || d % 2 == 1) squares0 = product(row0, row0, shape.width, shape.count);
    if (d % 2 == 0) squares1 = product(row1, row1, shape.width, shape.count);
    both[d] = static_cast<uint32_t>(squares0 + squares1);
    apart[d] = static_cast<uint32_t>(squares0 + squares1 - 2 * product(row0, row1, shape.width, shape.count));
  }
}

}  // namespace

constinit const Variants<GradientRow> kGradientRow = loop_versions<gradient_row, GradientRow>;
constinit const Variants<CompareRow> kCompareRow = loop_versions<compare_row, CompareRow>;

}  // namespace biseam::ring
