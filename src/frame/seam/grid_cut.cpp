#include "frame/seam/grid_cut.hpp"

#include "frame/seam/grid_costs.hpp"
#include "frame/seam/grid_flow.hpp"
#include "stages/seam/cut.hpp"
#include "stages/seam/seam_mask.hpp"

namespace biseam {

namespace {

// Numbers of what a cut needs.
struct Counts {
  explicit Counts(const BlendGray& detail) : width(detail.width), height(detail.height) {}

  int64_t nodes() const { return (height + 2) * width; }
  int64_t floats() const { return height * width + kGridCostRows * width; }  // terminals and rows of costs
  int64_t places() const { return 2 * height * width + 1; }                  // active nodes and orphans

  int64_t width, height;
};

}  // namespace

int64_t cut_memory_bytes(const BlendGray& detail) {
  if (!has_labels(detail.width, detail.height)) return 0;
  if (!graph_can_be_had(detail.width, detail.height)) return -1;
  const Counts counts(detail);
  return counts.nodes() * int64_t{sizeof(GridNode)} + counts.floats() * int64_t{sizeof(float)} +
         counts.places() * int64_t{sizeof(uint32_t)};
}

void cut_seam_within(int offset, BlendImage& mask, const BlendGray& detail1, const BlendGray& detail2, void* memory) {
  const int32_t width = detail1.width, height = detail1.height;
  fill_surroundings(mask, height, offset);
  if (!has_labels(width, height)) return;
  const Counts counts(detail1);
  const int64_t count = counts.width * counts.height;
  GridNode* const nodes = static_cast<GridNode*>(memory);
  float* const floats = reinterpret_cast<float*>(nodes + counts.nodes());
  uint32_t* const places = reinterpret_cast<uint32_t*>(floats + counts.floats());
  const Grid grid{nodes, floats, places, places + count + 1, height, width};
  fill_grid(grid, detail1.data, detail2.data, kSeamBorder, floats + count);
  solve_grid(grid);
  fill_source_side(mask, height, width, offset,
                   [&](int32_t r, int32_t c) { return grid.at(int64_t{r} * width + c).sink == 0; });
}

}  // namespace biseam
