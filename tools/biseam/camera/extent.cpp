#include "camera/extent.hpp"

#include <algorithm>
#include <cstddef>
#include <numbers>
#include <vector>

#include "biseam/biseam.h"

namespace biseam::tool {

// The middle strip stands for both lenses: around its own axis each sees the same longitudes.
Extent table_extent(int width, int feather, const std::array<float, 9>& turn) {
  const int rows = width / 2, quarter = width / 4;
  LensRecord lens = {};
  lens.focal = 1;
  lens.focus = 1;
  lens.column_step = float(2 * std::numbers::pi / width);
  lens.row_step = float(std::numbers::pi / rows);
  lens.width = width / 2 + 2 * feather;
  lens.rows = rows;
  lens.column_offset = float(float(quarter - feather) * lens.column_step - std::numbers::pi / 2);
  std::copy(turn.begin(), turn.end(), lens.matrix);

  constexpr std::size_t kSpill = 8;  // a builder may work in groups of four columns
  std::vector<float> entries(std::size_t(lens.width) * std::size_t(rows) * 2 + kSpill);
  MAPTIHeader map = {entries.data()};
  LutBuilderArgs builder = {lens.width, rows, &map, &lens, 0};
  CreateLUTTablePht(&builder);

  Extent extent = {0, 0, 0, 0};
  for (std::size_t i = 0; i < entries.size() - kSpill; i += 2) {
    extent.left = std::min<double>(extent.left, entries[i]);
    extent.right = std::max<double>(extent.right, entries[i]);
    extent.top = std::min<double>(extent.top, entries[i + 1]);
    extent.bottom = std::max<double>(extent.bottom, entries[i + 1]);
  }
  return extent;
}

}  // namespace biseam::tool
