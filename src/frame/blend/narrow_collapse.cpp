#include "frame/blend/narrow_collapse.hpp"

#include <cstddef>

#include "frame/blend/byte_rows.hpp"
#include "frame/blend/level_collapse.hpp"
#include "frame/blend/narrow_rows.hpp"
#include "stages/image/pyr_up_rows.hpp"
#include "stages/image/row_expansion.hpp"

namespace biseam {

namespace {

constexpr int kRingRows = 3;

// Three expanded rows of one image, the ones around a row of the next level: y - 1, y and y + 1, kept under numbers that are
// one larger.
template <class Sample>
class ExpandedRing {
 public:
  ExpandedRing(Sample* samples, ptrdiff_t row_step) : samples_(samples), row_step_(row_step) {}

  Sample* row(int64_t y) const { return samples_ + static_cast<ptrdiff_t>((y + 1) % kRingRows) * row_step_; }
  Sample* end() const { return samples_ + kRingRows * row_step_; }

 private:
  Sample* samples_;
  ptrdiff_t row_step_;
};

// A doubled row may be one pixel wider than the level.  Eight rows of 32-bit samples in all: fewer than collapse_scratch has.
ptrdiff_t row_step(int width) { return (ptrdiff_t{3} * (ptrdiff_t{width} + 1) + 15) / 16 * 16; }

class Scratch {
 public:
  Scratch(int32_t* samples, int width)
      : blended(samples, row_step(width)),
        source1(reinterpret_cast<uint16_t*>(blended.end()), row_step(width)),
        source2(source1.end(), row_step(width)),
        pair(reinterpret_cast<int32_t*>(source2.end())) {}

  void set(CollapseByteRows& rows, int64_t y) const {
    rows.blended = {blended.row(y - 1), blended.row(y), blended.row(y + 1)};
    rows.source1 = {source1.row(y - 1), source1.row(y), source1.row(y + 1)};
    rows.source2 = {source2.row(y - 1), source2.row(y), source2.row(y + 1)};
  }

  ExpandedRing<int32_t> blended;
  ExpandedRing<uint16_t> source1, source2;
  int32_t* pair;  // of collapsed rows, for a sink
};

}  // namespace

void collapse_byte_level(const MixedByteLevel& level, BlendImage& out, int32_t* scratch_samples, const RowSink* sink) {
  const Scratch scratch(scratch_samples, out.width);
  const BlendImage& below = *level.blended_below;
  const ptrdiff_t count = ptrdiff_t{3} * out.width;
  CollapseByteRows rows;
  const auto set_level_rows = [&](int64_t y) {
    rows.level1 = level.source1.row(y);
    rows.level2 = level.source2.row(y);
    rows.level_mask = level.mask.row(y);
  };
  int64_t next = -1;  // row of the next level to be expanded
  for (int64_t y = 0; y < below.height; ++y) {
    for (; next <= y + 1; ++next) {
      const int source_y = expanded_source_row(next, below.height, out.height);
      expand_row(below.data[0] + ptrdiff_t{source_y} * below.stride, scratch.blended.row(next), below.width, 3);
      expand_byte_row(level.below1.row(source_y), scratch.source1.row(next), below.width);
      expand_byte_row(level.below2.row(source_y), scratch.source2.row(next), below.width);
    }
    scratch.set(rows, y);
    int32_t* const to = sink != nullptr ? scratch.pair : out.data[0] + static_cast<ptrdiff_t>(2 * y) * out.stride;
    set_level_rows(2 * y);
    collapse_byte_row_on(rows, to, count);
    // An odd height ends on a row of the next level.
    const int pair_rows = 2 * y + 1 < out.height ? 2 : 1;
    if (pair_rows == 2) {
      set_level_rows(2 * y + 1);
      collapse_byte_row_between(rows, to + count, count);
    }
    if (sink != nullptr) sink->take(sink->context, to, static_cast<int>(2 * y), pair_rows);
  }
}

}  // namespace biseam
