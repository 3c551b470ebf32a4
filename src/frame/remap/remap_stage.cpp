#include "frame/stages.hpp"

#include <algorithm>
#include <atomic>

#include "base/threads.hpp"
#include "stages/lens/remap.hpp"

namespace biseam {

namespace {

// What the strips share; each adds its columns and rows.
RemapThreadArgs strip_args(const StitchEngine& e, const FramePlan& plan, const MAPTIHeader& map, const ImageHeader& source) {
  RemapThreadArgs args = {};
  args.table = map.entries;
  args.source = source;
  args.pano = e.pano;
  args.pano.height = plan.rows;
  args.end_row = plan.rows;
  args.format = e.config->in_yuv_type;
  return args;
}

RemapThreadArgs left_args(const StitchEngine& e, const FramePlan& plan) {
  RemapThreadArgs args = strip_args(e, plan, e.map_left, e.src_image[0]);
  args.band0 = e.band_yuv[0];
  args.plain_width = e.left_inner;
  args.plain_column = 0;
  args.band0_column = e.left_inner;
  args.pano_column = static_cast<int>(plan.layout.plain_columns[0]);
  return args;
}

RemapThreadArgs middle_args(const StitchEngine& e, const FramePlan& plan, int first_row, int end_row) {
  RemapThreadArgs args = strip_args(e, plan, e.map_middle, e.src_image[1]);
  args.band0 = e.band_yuv[1];
  args.band1 = e.band_yuv[2];
  args.plain_width = e.middle_inner;
  args.plain_column = e.band_width;
  args.band0_column = 0;
  args.band1_column = e.band_width + e.middle_inner;
  args.pano_column = static_cast<int>(plan.layout.plain_columns[1]);
  args.first_row = first_row;
  args.end_row = end_row;
  return args;
}

RemapThreadArgs right_args(const StitchEngine& e, const FramePlan& plan) {
  RemapThreadArgs args = strip_args(e, plan, e.map_right, e.src_image[0]);
  args.band0 = e.band_yuv[3];
  args.plain_width = e.right_inner;
  args.plain_column = e.band_width;
  args.band0_column = 0;
  args.pano_column = static_cast<int>(plan.layout.plain_columns[2]);
  return args;
}

// Rows of a strip that a thread takes at a time.  Even, as rows go in pairs, and few: the regions of a strip lie side by side
// in its table, so that what one region's rows asked of memory ahead of time is still there for the next one.
constexpr int kRowsAtATime = 16;

struct Strip {
  RemapThreadArgs args;
  void (*sample_rows)(const RemapThreadArgs& args, SampleRegion sample);
  std::atomic<int> next_row;  // no thread has taken this one or those below it
};

void sample_strip(Strip& strip, SampleRegion sample) {
  RemapThreadArgs rows = strip.args;
  while ((rows.first_row = strip.next_row.fetch_add(kRowsAtATime, std::memory_order_relaxed)) < strip.args.end_row) {
    rows.end_row = std::min(rows.first_row + kRowsAtATime, strip.args.end_row);
    strip.sample_rows(rows, sample);
  }
}

struct RemapTask {
  Strip* strips;
  int count, first;
  SampleRegion sample;
};

void* run_remap(void* task) {
  const RemapTask& t = *static_cast<const RemapTask*>(task);
  for (int k = 0; k < t.count; ++k) sample_strip(t.strips[(t.first + k) % t.count], t.sample);
  return nullptr;
}

// Four threads, each with a strip to begin with.  Those that are done help with what is left, so that all end at about the same
// time on however many processors there are.
template <int count>
void sample_strips(Strip (&strips)[count], SampleRegion sample) {
  RemapTask tasks[4];
  ThreadTask threads[4];
  for (int k = 0; k < 4; ++k) {
    tasks[k] = {strips, count, k % count, sample};
    threads[k] = {run_remap, &tasks[k]};
  }
  run_together(threads, 4);
}

}  // namespace

void remap_stage(const StitchEngine& e, const FramePlan& plan, SampleRegion sample) {
  const int rows = plan.rows, half = rows / 2;
  if (half % 2 == 0) {
    Strip strips[] = {{left_args(e, plan), remap_edge_strip, 0},
                      {middle_args(e, plan, 0, rows), remap_middle_strip, 0},
                      {right_args(e, plan), remap_edge_strip, 0}};
    sample_strips(strips, sample);
  } else {
    // Rows go in pairs from each half's first one, so with an odd half both halves write the rows at the split.  One after the
    // other, the lower half wins in every run.
    Strip strips[] = {{left_args(e, plan), remap_edge_strip, 0},
                      {middle_args(e, plan, 0, half), remap_middle_strip, 0},
                      {right_args(e, plan), remap_edge_strip, 0}};
    sample_strips(strips, sample);
    Strip lower{middle_args(e, plan, half, rows), remap_middle_strip, half};
    sample_strip(lower, sample);
  }
}

}  // namespace biseam
