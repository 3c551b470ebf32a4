#pragma once

#include <cstddef>
#include <cstdint>

// Row kernels that collapse one level of two mixed Laplacian pyramids.  Everything wraps.
namespace biseam {

// Three neighbouring rows of an image that is being expanded: a row and those above and below it, of which every one has been
// expanded horizontally, by expand_row.
struct ExpandedRows {
  const int32_t *above, *row, *below;
};

// What a row of the collapsed image is made of.
struct CollapseRows {
  ExpandedRows blended, source1, source2;       // the level below: collapsed, and both Gaussian pyramids
  const int32_t *level1, *level2, *level_mask;  // this level's row of both Gaussian pyramids and of the weights
};

// out = up(blended) + (level1 - up(source1)) * mask + (level2 - up(source2)) * (64 - mask) for a row on a row of the level
// below, and for one between two, where nothing above is read.  out overlaps nothing that is read.
void collapse_row_on(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept;
void collapse_row_between(const CollapseRows& rows, int32_t* out, ptrdiff_t count) noexcept;

}  // namespace biseam
