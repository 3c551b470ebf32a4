#include "stages/lens/lens_table.hpp"

#include <algorithm>
#include <cstddef>

#include "base/threads.hpp"
#include "stages/lens/lens_entry.hpp"
#include "stages/lens/lens_strip.hpp"

namespace biseam {

namespace {

struct BuildTask {
  BuildStrip build;
  LutBuilderArgs args;
};

void* run_build(void* task) {
  const auto& [build, args] = *static_cast<const BuildTask*>(task);
  build(args);
  return nullptr;
}

}  // namespace

RowRange rows_of_part(const LutBuilderArgs& args) {
  const int middle = args.rows / 2;
  return {args.part == 2 ? middle : 0, args.part == 1 ? middle : args.rows};
}

void build_strip(const LutBuilderArgs& args) {
  if (args.width < 1) return;
  const LensRecord& lens = *args.lens;
  const float scale = lens_scale(lens);
  const auto [first, end] = rows_of_part(args);
  for (int row = first; row < end; ++row) {
    const Latitude latitude = row_latitude(lens, row);
    float* entry = args.map->entries + std::ptrdiff_t{2} * row * args.width;
    for (int column = 0; column < args.width; ++column, entry += 2) {
      const double longitude = column_longitude(lens, column);
      map_entry(lens, scale, latitude, fast_sine(longitude), fast_cosine(longitude), entry);
    }
  }
}

void build_tables(const StitchConfig& config, StitchEngine& engine, BuildStrip build) {
  LensRecord lenses[kStripCount];
  for (int strip = 0; strip < kStripCount; ++strip) lenses[strip] = describe_strip(config, strip);
  MAPTIHeader* maps[kStripCount] = {&engine.map_left, &engine.map_middle, &engine.map_right};

  // The tables are carved with in_h rows.
  const int rows = std::min(config.out_h[0], config.in_h);
  const auto task = [&](int strip, int part) {
    return BuildTask{build, {lenses[strip].width, rows, maps[strip], &lenses[strip], part}};
  };
  BuildTask tasks[] = {task(0, 0), task(1, 1), task(1, 2), task(2, 0)};
  const ThreadTask threads[] = {{run_build, &tasks[0]}, {run_build, &tasks[1]}, {run_build, &tasks[2]}, {run_build, &tasks[3]}};
  run_together(threads, 4);
}

}  // namespace biseam
