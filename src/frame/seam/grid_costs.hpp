#pragma once

#include <cstdint>

#include "frame/seam/grid_flow.hpp"

namespace biseam {

// build_grid for a Grid: writes nodes and terminals.  rows: scratch of kGridCostRows * width floats.
inline constexpr int32_t kGridCostRows = 5;
void fill_grid(const Grid& grid, const int32_t* a, const int32_t* b, int32_t border, float* rows) noexcept;

}  // namespace biseam
