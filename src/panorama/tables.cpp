#include "panorama/tables.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "base/panorama_layout.hpp"
#include "panorama/error_writer.hpp"

namespace biseam {

namespace {

// u and v must lie in [0, end).
struct Bounds {
  double u_end, v_end;
  bool hold(float u, float v) const { return u >= 0 && u < u_end && v >= 0 && v < v_end; }  // false for NaN
};

struct Misses {
  int64_t count = 0;
  int column = 0, row = 0;  // panorama position of the first
  float u = 0, v = 0;

  void add(int at_column, int at_row, float at_u, float at_v) {
    if (count++ == 0) {
      column = at_column;
      row = at_row;
      u = at_u;
      v = at_v;
    }
  }
};

// A table of a lens.
struct Strip {
  const MAPTIHeader& map;
  int width, first_column;
};

// An entry that is no number, on the axis itself, becomes the position of the axis.
void mend_entry(float* entry, float u, float v) {
  if (!std::isnan(entry[0]) || !std::isnan(entry[1])) return;
  entry[0] = u;
  entry[1] = v;
}

float* entry_at(const MAPTIHeader& map, int width, int row, int x) {
  return map.entries + (static_cast<std::ptrdiff_t>(row) * width + x) * 2;
}

// Luma reads the pixel and the one below.  Chroma takes every second entry of every second row and reads the pair, the next
// one and both below them.
void check_strip(const StitchConfig& config, const Strip& strip, Misses& misses) {
  const double chroma_rows_below = config.in_yuv_type == BISEAM_YUV420_SEMIPLANAR ? 2 : 1;
  const Bounds luma{static_cast<double>(config.in_w), config.in_h - 1.0};
  const Bounds chroma{config.in_w - 2.0, config.in_h - chroma_rows_below};
  const float* entry = strip.map.entries;
  for (int row = 0; row < config.in_h; ++row) {
    for (int x = 0; x < strip.width; ++x, entry += 2) {
      const float u = entry[0], v = entry[1];
      const bool with_chroma = row % 2 == 0 && x % 2 == 0;
      if (luma.hold(u, v) && (!with_chroma || chroma.hold(u, v))) continue;
      misses.add(strip.first_column + x, row, u, v);
    }
  }
}

Error report(const StitchConfig& config, int lens, const Misses& misses) {
  if (misses.count == 0) return {};
  return ErrorWriter::write(ErrorCode::outside_picture,
                            "lens %d: %lld table entries leave the %dx%d picture, the first at panorama column %d, row %d "
                            "(u %.1f, v %.1f): lower p%d, change_focus or feather, or correct cx%d, cy%d%s",
                            lens, static_cast<long long>(misses.count), config.in_w, config.in_h, misses.column, misses.row,
                            static_cast<double>(misses.u), static_cast<double>(misses.v), lens, lens, lens,
                            lens == 1 ? " or lens_matrix" : "");
}

}  // namespace

// Row in_h / 2 - 1 is the equator.  Lens 0 looks along the last panorama column, lens 1 along column out_w / 2 - 1.
void mend_axes(StitchEngine& engine) {
  const StitchConfig& config = *engine.config;
  const int equator = config.in_h / 2 - 1;
  mend_entry(entry_at(engine.map_right, engine.right_width, equator, engine.right_width - 1), config.cx0, config.cy0);
  const int axis = config.out_w[0] / 2 - 1 - static_cast<int>(layout_of(config).strip_columns[1]);
  mend_entry(entry_at(engine.map_middle, engine.middle_width, equator, axis), config.lens_matrix[2] + config.cx1,
             config.lens_matrix[5] + config.cy1);
}

Error check_tables(const StitchEngine& engine) {
  const StitchConfig& config = *engine.config;
  const PanoramaLayout layout = layout_of(config);
  const auto first_column = [&](int strip) { return static_cast<int>(layout.strip_columns[strip]); };
  Misses edges, middle;
  check_strip(config, {engine.map_left, engine.left_width, first_column(0)}, edges);
  check_strip(config, {engine.map_right, engine.right_width, first_column(2)}, edges);
  if (Error error = report(config, 0, edges)) return error;
  check_strip(config, {engine.map_middle, engine.middle_width, first_column(1)}, middle);
  return report(config, 1, middle);
}

}  // namespace biseam
