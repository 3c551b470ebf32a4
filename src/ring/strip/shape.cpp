#include "ring/strip/shape.hpp"

namespace biseam::ring {

int strip_length(int panorama_width) noexcept {
  const int length = (panorama_width / 4 + 8) / 16 * 16;
  return length < 16 ? 16 : length > kMaxStripLength ? kMaxStripLength : length;
}

int strip_levels(StripShape shape) noexcept {
  int levels = 1;
  for (; levels < kMaxStripLevels && shape.length % 2 == 0 && shape.length > 4 && shape.width > 4; ++levels)
    shape = reduced(shape);
  return levels;
}

}  // namespace biseam::ring
