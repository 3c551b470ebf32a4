#include "stages/image/border.hpp"

namespace biseam {

void border_index(int32_t& index, int64_t p, int len, int rule) {
  if ((p >= 0 && p < len) || rule != kReflect101) {
    index = static_cast<int32_t>(p);
    return;
  }
  if (len < 2) return;
  // Mirroring at 0 and at len - 1 in turn repeats every 2 (len - 1) coordinates.
  const int64_t period = 2 * (int64_t{len} - 1);
  const int64_t distance = (p < 0 ? -p : p) % period;
  index = static_cast<int32_t>(distance < len ? distance : period - distance);
}

}  // namespace biseam
