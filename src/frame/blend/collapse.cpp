#include "frame/blend/collapse.hpp"

#include <cstddef>

#include "frame/blend/blend_rows.hpp"
#include "frame/blend/byte_rows.hpp"
#include "frame/blend/expand_row.hpp"
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

// A doubled row may be one pixel wider than the level.
ptrdiff_t row_step(int width) { return (ptrdiff_t{3} * (ptrdiff_t{width} + 1) + 15) / 16 * 16; }

class Scratch {
 public:
  Scratch(int32_t* samples, int width)
      : blended(samples, row_step(width)),
        source1(reinterpret_cast<uint16_t*>(blended.end()), row_step(width)),
        source2(source1.end(), row_step(width)),
        pair(reinterpret_cast<int32_t*>(source2.end())) {}

  void set(CollapseRows& rows, int64_t y) const {
    rows.blended = {blended.row(y - 1), blended.row(y), blended.row(y + 1)};
    rows.source1 = {source1.row(y - 1), source1.row(y), source1.row(y + 1)};
    rows.source2 = {source2.row(y - 1), source2.row(y), source2.row(y + 1)};
  }

  ExpandedRing<int32_t> blended;
  ExpandedRing<uint16_t> source1, source2;
  int32_t* pair;  // of collapsed rows, for a sink
};

// Three blended rows, half as much for either source, and the pair.
constexpr int64_t kScratchRows = kRingRows + kRingRows + 2;

// rows_at(y) is where rows y and y + 1 go; has_come(y, rows) is told when they are there, one where an odd height ends.
template <class RowsAt, class HasCome>
void collapse(const MixedLevel& level, int32_t* scratch_samples, RowsAt rows_at, HasCome has_come) {
  const Scratch scratch(scratch_samples, level.mask.width);
  const BlendImage& below = *level.blended_below;
  const int height = level.mask.height;
  const ptrdiff_t count = level.mask.row_samples();
  CollapseRows rows;
  const auto set_level_rows = [&](int64_t y) {
    rows.level1 = level.source1.row(y);
    rows.level2 = level.source2.row(y);
    rows.level_mask = level.mask.row(y);
  };
  int64_t next = -1;  // row of the next level to be expanded
  for (int64_t y = 0; y < below.height; ++y) {
    for (; next <= y + 1; ++next) {
      const int source_y = expanded_source_row(next, below.height, height);
      expand_row(below.data[0] + ptrdiff_t{source_y} * below.stride, scratch.blended.row(next), below.width);
      expand_byte_row(level.below1.row(source_y), scratch.source1.row(next), below.width);
      expand_byte_row(level.below2.row(source_y), scratch.source2.row(next), below.width);
    }
    scratch.set(rows, y);
    int32_t* const to = rows_at(2 * y, scratch);
    set_level_rows(2 * y);
    kCollapseRowOn.best()(rows, to, count);
    // An odd height ends on a row of the next level.
    if (2 * y + 1 < height) {
      set_level_rows(2 * y + 1);
      kCollapseRowBetween.best()(rows, to + count, count);
    }
    has_come(2 * y, to);
  }
}

}  // namespace

int64_t collapse_scratch(int width) { return kScratchRows * int64_t{row_step(width)}; }

void collapse_level(const MixedLevel& level, BlendImage& out, int32_t* scratch) {
  const auto row_of_out = [&](int64_t y, const Scratch&) { return out.data[0] + static_cast<ptrdiff_t>(y) * out.stride; };
  collapse(level, scratch, row_of_out, [](int64_t, int32_t*) {});
}

void collapse_level(const MixedLevel& level, const RowSink& sink, int32_t* scratch) {
  const auto pair = [](int64_t, const Scratch& rows) { return rows.pair; };
  collapse(level, scratch, pair, [&](int64_t y, int32_t* rows) { sink.take(sink.context, rows, static_cast<int>(y)); });
}

}  // namespace biseam
