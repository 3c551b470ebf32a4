#include "frame/tables/lens_tiles.hpp"

#include <algorithm>
#include <cstddef>

#include "frame/tables/lens_row.hpp"
#include "stages/lens/lens_table.hpp"

namespace biseam {

namespace {

// Latitudes and longitudes of a tile fit the first-level cache; tiles are large enough that making them costs next to nothing.
constexpr int kTileRows = 512, kTileColumns = 1024;

void build_tile(const LutBuilderArgs& args, int first_row, int rows, int first_column, int columns) {
  const LensRecord& lens = *args.lens;
  const float scale = lens_scale(lens);
  double sines[kTileColumns], cosines[kTileColumns];
  turn_columns(lens, first_column, columns, sines, cosines);
  for (int row = first_row; row < first_row + rows; ++row) {
    float* const entries = args.map->entries + std::ptrdiff_t{2} * (std::ptrdiff_t{row} * args.width + first_column);
    kMapRow.best()(lens, scale, row_latitude(lens, row), sines, cosines, columns, entries);
  }
}

}  // namespace

void build_strip_by_tiles(const LutBuilderArgs& args) {
  const auto [first, end] = rows_of_part(args);
  for (int row = first, rows; row < end; row += rows) {
    rows = std::min(end - row, kTileRows);
    for (int column = 0, columns; column < args.width; column += columns) {
      columns = std::min(args.width - column, kTileColumns);
      build_tile(args, row, rows, column, columns);
    }
  }
}

}  // namespace biseam
