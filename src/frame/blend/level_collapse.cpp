#include "frame/blend/level_collapse.hpp"

#include <cstddef>
#include <cstring>
#include <initializer_list>

#include "base/prefetch.hpp"
#include "frame/blend/collapse_rows.hpp"
#include "stages/blend/widen.hpp"
#include "stages/image/pyr_up_rows.hpp"
#include "stages/image/row_expansion.hpp"

namespace biseam {

namespace {

constexpr int kImages = 3;    // expanded: the blended one and both sources
constexpr int kRingRows = 3;  // of each
constexpr int kScratchRows = kImages * kRingRows + 2;

// Of a scratch row: a doubled row may be one pixel wider than the level.
int64_t row_step(int width) { return (3 * (int64_t{width} + 1) + 15) / 16 * 16; }

const int32_t* row_of(const BlendImage& image, int64_t y) { return image.data[0] + static_cast<ptrdiff_t>(y) * image.stride; }

// The rows that a pass over a level keeps: three expanded ones of each image, and each source's row widened.
class Scratch {
 public:
  Scratch(int32_t* samples, int width) : samples_(samples), row_step_(static_cast<ptrdiff_t>(row_step(width))) {}

  int32_t* expanded(int image, int64_t y) const { return row(image * kRingRows + static_cast<int>(y % kRingRows)); }
  int32_t* widened(int source) const { return row(kImages * kRingRows + source); }

  // Rows y - 1, y and y + 1, kept under numbers that are one larger.
  ExpandedRows around(int image, int64_t y) const {
    return {expanded(image, y), expanded(image, y + 1), expanded(image, y + 2)};
  }

 private:
  int32_t* row(int i) const { return samples_ + i * row_step_; }

  int32_t* samples_;
  ptrdiff_t row_step_;
};

constexpr int64_t kRowsAhead = 4;  // measured: large bands take a third less time

void prefetch_row(const BlendImage& image, int64_t y) {
  if (y < image.height) prefetch(row_of(image, y), ptrdiff_t{3} * image.width * ptrdiff_t{sizeof(int32_t)});
}

// The level's row; widened is written where the image is not as wide as the level.
const int32_t* level_row(const GaussianLevel& level, int64_t y, int32_t* widened) {
  const int32_t* const row = row_of(*level.image, y);
  if (level.trans_width == 0) return row;
  const size_t bytes = size_t{3} * static_cast<size_t>(level.image->width) * sizeof(int32_t);
  std::memcpy(widened + ptrdiff_t{3} * covered_column(level.trans_width, level.side), row, bytes);
  mirror_edge(widened, level.image->width + level.trans_width, level.trans_width, level.side);
  return widened;
}

}  // namespace

int64_t collapse_scratch(int width) { return kScratchRows * row_step(width); }

void collapse_level(const MixedLevel& level, BlendImage& out, int32_t* scratch_samples) {
  const Scratch scratch(scratch_samples, out.width);
  const BlendImage* const below[kImages] = {level.blended_below, level.source1.below, level.source2.below};
  const int below_width = below[0]->width, below_height = below[0]->height;
  const ptrdiff_t count = ptrdiff_t{3} * out.width;
  CollapseRows rows;
  const auto set_level_rows = [&](int64_t y) {
    for (const BlendImage* image : {level.source1.image, level.source2.image, level.mask}) prefetch_row(*image, y + kRowsAhead);
    rows.level1 = level_row(level.source1, y, scratch.widened(0));
    rows.level2 = level_row(level.source2, y, scratch.widened(1));
    rows.level_mask = row_of(*level.mask, y);
  };
  int64_t next = -1;  // row of the next level to be expanded
  for (int64_t y = 0; y < below_height; ++y) {
    for (; next <= y + 1; ++next) {
      const int source_y = expanded_source_row(next, below_height, out.height);
      for (int i = 0; i < kImages; ++i) expand_row(row_of(*below[i], source_y), scratch.expanded(i, next + 1), below_width, 3);
    }
    rows.blended = scratch.around(0, y);
    rows.source1 = scratch.around(1, y);
    rows.source2 = scratch.around(2, y);
    int32_t* const to = out.data[0] + static_cast<ptrdiff_t>(2 * y) * out.stride;
    set_level_rows(2 * y);
    collapse_row_on(rows, to, count);
    // An odd height ends on a row of the next level.
    if (2 * y + 1 >= out.height) return;
    set_level_rows(2 * y + 1);
    collapse_row_between(rows, to + out.stride, count);
  }
}

}  // namespace biseam
