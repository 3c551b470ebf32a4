#include "ring/strip/reduction.hpp"

#include "base/prefetch.hpp"

namespace biseam::ring {

namespace {

int clamped(int i, int count) { return i < 0 ? 0 : i < count ? i : count - 1; }

int log2_of(int power) {
  int log = 0;
  while (power >> log > 1) ++log;
  return log;
}

ReducedAxis plan_axis(int samples, int spacing, int32_t origin, int factor) {
  const int own = factor > spacing ? factor / spacing : 1;
  return {samples, own, (samples + own - 1) / own, origin + spacing * (own - 1) * 32768, log2_of(spacing * own)};
}

// Of the plane, for a reduced row.
int first_row(const ReducedAxis& axis, int row) { return axis.factor * (row - ReducedAxis::kMargin) - (axis.factor - 1); }

// Rows of the plane that make up a reduced row, where sample x lies in each.
template <class Sample>
void find_rows(const ReducedAxis& axis, const PlaneSamples& plane, int row, int x, const Sample** rows) {
  const int first = first_row(axis, row);
  for (int k = 0; k < reduction_taps(axis.factor); ++k) {
    const ptrdiff_t y = clamped(first + k, axis.samples);
    rows[k] =
        reinterpret_cast<const Sample*>(static_cast<const char*>(plane.first) + y * plane.stride) + ptrdiff_t{x} * plane.step;
  }
}

// Samples [x, x + count) of the plane, reduced over rows.
void reduce_rows(const Reduction& reduction, const PlaneSamples& plane, SampleFormat format, int row, int x, int16_t* out,
                 int count) {
  if (format.depth == 8) {
    const uint8_t* rows[reduction_taps(kMaxReduction)];
    find_rows(reduction.y, plane, row, x, rows);
    kReduceRowsOfBytes.best()(rows, plane.step, reduction.kernel_y, out, count);
  } else {
    const uint16_t* rows[reduction_taps(kMaxReduction)];
    find_rows(reduction.y, plane, row, x, rows);
    kReduceRowsOfWords.best()(rows, plane.step, format, reduction.kernel_y, out, count);
  }
}

// Samples of a row that are reduced together: they stay in the first cache.
constexpr int kRun = 4096;
static_assert(kRun >= Reduction::kTile * kMaxReduction);

// Tiles [tile, end) of a row, at most kRun samples of the plane.
void reduce_tiles(const Reduction& reduction, const PlaneSamples& plane, SampleFormat format, int row, int tile, int end,
                  int16_t* out) {
  int16_t line[kRun + 2 * kMaxReduction];
  const ReducedAxis& x = reduction.x;
  const int indices = (end - tile) * Reduction::kTile;
  const int first = x.factor * (tile * Reduction::kTile - ReducedAxis::kMargin) - (x.factor - 1);
  const int wanted = x.factor * (indices - 1) + reduction_taps(x.factor);
  // What lies in the plane; the rest repeats its edges.
  const int begin = clamped(first, x.samples), last = clamped(first + wanted - 1, x.samples);
  reduce_rows(reduction, plane, format, row, begin, line + (begin - first > 0 ? begin - first : 0), last - begin + 1);
  for (int i = 0; i < begin - first && i < wanted; ++i) line[i] = line[begin - first];
  const int filled = last - first + 1 > 1 ? last - first + 1 : 1;
  for (int i = filled; i < wanted; ++i) line[i] = line[filled - 1];
  kReduceColumns.best()(line, reduction.kernel_x, out + ptrdiff_t{tile} * Reduction::kTile, indices);
}

// The next needed tiles of a row from one on, as many as are reduced together; none: begin = end = the row's end.
struct TileRun {
  int begin, end;
};

TileRun next_run(const Reduction& reduction, const uint8_t* needed, int row, int from) {
  const uint8_t* const tiles = needed + ptrdiff_t{row} * reduction.tiles;
  const int most = kRun / (Reduction::kTile * reduction.x.factor);
  TileRun run{from, 0};
  while (run.begin < reduction.tiles && tiles[run.begin] == 0) ++run.begin;
  run.end = run.begin;
  while (run.end < reduction.tiles && run.end - run.begin < most && tiles[run.end] != 0) ++run.end;
  return run;
}

// Rims of pictures are narrow: what they have of a row is reduced long before that of the rows below could be fetched.
constexpr int kRowsAhead = 4;

// What a reduced row wants of the plane, but for what the row before it does unless it is the first.
[[gnu::always_inline]] inline void prefetch_row(const Reduction& reduction, const PlaneSamples& plane, SampleFormat format,
                                                const uint8_t* needed, int row, bool first) {
  const ReducedAxis &x = reduction.x, &y = reduction.y;
  const int end_row = first_row(y, row) + reduction_taps(y.factor);
  const int top = clamped(first ? first_row(y, row) : end_row - y.factor, y.samples), bottom = clamped(end_row, y.samples);
  const ptrdiff_t unit = (format.depth == 8 ? 1 : 2) * ptrdiff_t{plane.step};
  for (TileRun run = next_run(reduction, needed, row, 0); run.begin < run.end;
       run = next_run(reduction, needed, row, run.end)) {
    const int left = clamped(x.factor * (run.begin * Reduction::kTile - ReducedAxis::kMargin), x.samples);
    const int right = clamped(x.factor * (run.end * Reduction::kTile - ReducedAxis::kMargin), x.samples);
    prefetch_rows<false>(static_cast<const char*>(plane.first) + top * plane.stride + left * unit, plane.stride, bottom - top,
                         (right - left) * unit);
  }
}

}  // namespace

Reduction plan_reduction(const PlaneGeometry& plane, int factor) noexcept {
  Reduction reduction{plan_axis(plane.width, plane.spacing_x, plane.origin_x, factor),
                      plan_axis(plane.height, plane.spacing_y, plane.origin_y, factor),
                      0,
                      {},
                      {}};
  reduction.tiles = (reduction.x.count + 2 * ReducedAxis::kMargin + Reduction::kTile - 1) / Reduction::kTile;
  reduction.kernel_x = make_reduction_kernel(reduction.x.factor);
  reduction.kernel_y = make_reduction_kernel(reduction.y.factor);
  return reduction;
}

void mark_tiles(const Reduction& reduction, StripPositions positions, ptrdiff_t count, uint8_t* needed) noexcept {
  // Four samples per axis are read from the one before a position's own.
  constexpr int kFirst = ReducedAxis::kMargin - 1, kLast = kFirst + 3;
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int x = reduction.x.index_of(positions.x[i]) >> 8, y = reduction.y.index_of(positions.y[i]) >> 8;
    for (int row = y + kFirst; row <= y + kLast; ++row) {
      uint8_t* tiles = needed + ptrdiff_t{row} * reduction.tiles;
      tiles[(x + kFirst) / Reduction::kTile] = tiles[(x + kLast) / Reduction::kTile] = 1;
    }
  }
}

void reduce_part(const Reduction& reduction, const PlaneSamples& plane, SampleFormat format, const uint8_t* needed, int part,
                 int16_t* reduced) noexcept {
  const int begin = part * Reduction::kBand;
  const int end = begin + Reduction::kBand < reduction.rows() ? begin + Reduction::kBand : reduction.rows();
  int asked = begin;
  for (int y = begin; y < end; ++y) {
    for (; asked < end && asked <= y + kRowsAhead; ++asked) {
      prefetch_row(reduction, plane, format, needed, asked, asked == begin);
    }
    for (TileRun run = next_run(reduction, needed, y, 0); run.begin < run.end; run = next_run(reduction, needed, y, run.end)) {
      reduce_tiles(reduction, plane, format, y, run.begin, run.end, reduced + y * reduction.stride());
    }
  }
}

}  // namespace biseam::ring
