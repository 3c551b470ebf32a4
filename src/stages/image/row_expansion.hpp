#pragma once

#include <algorithm>
#include <cstdint>

#include "stages/image/border.hpp"

namespace biseam {

// The source row that stands for row y of an expansion, one outside at most.  Mirroring takes place on the destination's rows.
inline int expanded_source_row(int64_t y, int src_height, int dst_height) {
  return std::min(reflected(2 * y, dst_height) / 2, src_height - 1);
}

}  // namespace biseam
