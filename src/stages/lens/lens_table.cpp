#include "stages/lens/lens_table.hpp"

#include <algorithm>
#include <cstddef>

#include "base/threads.hpp"
#include "frame/tables/lens_row.hpp"
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

// Latitudes and longitudes of a tile fit the first-level cache; tiles are large enough that making them costs next to nothing.
constexpr int kTileRows = 512, kTileColumns = 1024;
static_assert(kTileColumns % 4 == 0);

void build_tile(const LutBuilderArgs& args, int first_row, int rows, int first_column, int columns) {
  const LensRecord& lens = *args.lens;
  const float scale = lens.focal * lens.focus;
  double sines[kTileColumns], cosines[kTileColumns];
  turn_columns(lens, first_column, columns, sines, cosines);
  for (int row = first_row; row < first_row + rows; ++row) {
    const std::size_t entry =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(args.width) + static_cast<std::size_t>(first_column);
    map_row(lens, scale, row_latitude(lens, row), sines, cosines, columns, args.map->entries + 2 * entry);
  }
}

}  // namespace

void build_strip(const LutBuilderArgs& args) {
  const int middle = args.rows / 2;
  const int first = args.part == 2 ? middle : 0, end = args.part == 1 ? middle : args.rows;
  for (int row = first, rows; row < end; row += rows) {
    rows = std::min(end - row, kTileRows);
    for (int column = 0, columns; column < args.width; column += columns) {
      columns = std::min(args.width - column, kTileColumns);
      build_tile(args, row, rows, column, columns);
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
