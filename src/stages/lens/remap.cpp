#include "stages/lens/remap.hpp"

#include <algorithm>
#include <cstddef>

#include "stages/lens/sample.hpp"

namespace biseam {

namespace {

// Items first .. end - 1 of a region's row whose table columns, column + item * step, lie inside the table's row.
struct Span {
  int64_t first, end;
};

Span inside_table(int64_t column, int step, int64_t count, int64_t table_width) {
  const int64_t first = column < 0 ? (-column + step - 1) / step : 0;
  const int64_t end = column < table_width ? (table_width - column + step - 1) / step : 0;
  return {first, std::min(count, end)};
}

const float* table_entry(const RemapRegion& region, int64_t row, int64_t column) {
  return region.table + static_cast<std::ptrdiff_t>((row * region.table_width + column) * 2);
}

uint8_t* plane_byte(const ImageHeader& image, int plane, int64_t row, int64_t column) {
  return image.planes[plane] + static_cast<std::ptrdiff_t>(row * image.strides[plane] + column);
}

// Where a part of a strip goes, and which of its columns.
struct StripPart {
  const ImageHeader& destination;
  int table_column, destination_column, count;
};

StripPart plain_part(const RemapThreadArgs& a) { return {a.pano, a.plain_column, a.pano_column, a.plain_width}; }
StripPart band_part(const ImageHeader& band, int table_column) { return {band, table_column, 0, band.width}; }

RemapRegion region_of(const RemapThreadArgs& args, int table_width, const StripPart& part) {
  return {.table = args.table,
          .table_width = table_width,
          .table_column = part.table_column,
          .source = &args.source,
          .destination = &part.destination,
          .destination_column = part.destination_column,
          .count = part.count,
          .first_row = args.first_row,
          .end_row = args.end_row,
          .chroma_x_factor = 2,
          .chroma_y_factor = args.format < 4 ? 2 : 1};
}

}  // namespace

RegionRow luma_row_of(const RemapRegion& region, int64_t row) {
  const auto [first, end] = inside_table(region.table_column, 1, region.count, region.table_width);
  if (row < 0 || row >= region.destination->height || first >= end) return {};
  return {table_entry(region, row, region.table_column + first),
          plane_byte(*region.destination, 0, row, region.destination_column + first), static_cast<int>(end - first)};
}

RegionRow chroma_row_of(const RemapRegion& region, int64_t row) {
  if (region.chroma_y_factor < 1) return {};
  const int64_t chroma_row = row / region.chroma_y_factor, column = region.table_column / 2 * 2;
  const auto [first, end] = inside_table(column, 2, region.count / 2, region.table_width);
  if (row < 0 || chroma_row >= region.destination->height / region.chroma_y_factor || first >= end) return {};
  return {table_entry(region, row, column + 2 * first),
          plane_byte(*region.destination, 1, chroma_row, region.destination_column / 2 * 2 + 2 * first),
          static_cast<int>(end - first)};
}

// One chroma row comes with each pair of luma rows: where chroma has full height, every second chroma row keeps what it held.
void remap_region(const RemapRegion& region) {
  const ImageHeader& source = *region.source;
  const float x_factor = static_cast<float>(region.chroma_x_factor), y_factor = static_cast<float>(region.chroma_y_factor);
  for (int64_t row = region.first_row; row < region.end_row; row += 2) {
    for (const int64_t luma_row : {row, row + 1}) {
      const RegionRow luma = luma_row_of(region, luma_row);
      for (int k = 0; k < luma.count; ++k)
        luma.samples[k] = sample_luma(luma.entries + 2 * k, source.planes[0], source.strides[0]);
    }
    const RegionRow chroma = chroma_row_of(region, row);
    for (int k = 0; k < chroma.count; ++k) {
      sample_chroma(chroma.entries + 4 * k, x_factor, y_factor, source.planes[1], source.strides[1], chroma.samples + 2 * k);
    }
  }
}

void remap_edge_strip(const RemapThreadArgs& args, SampleRegion sample) {
  const int table_width = args.plain_width + args.band0.width;
  sample(region_of(args, table_width, plain_part(args)));
  sample(region_of(args, table_width, band_part(args.band0, args.band0_column)));
}

void remap_middle_strip(const RemapThreadArgs& args, SampleRegion sample) {
  const int table_width = args.plain_width + args.band0.width + args.band1.width;
  sample(region_of(args, table_width, band_part(args.band0, args.band0_column)));
  sample(region_of(args, table_width, plain_part(args)));
  sample(region_of(args, table_width, band_part(args.band1, args.band1_column)));
}

}  // namespace biseam
