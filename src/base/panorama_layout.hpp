#pragma once

#include <cstdint>

#include "biseam/records.h"

namespace biseam {

// Where a panorama's strips, bands and blended pairs lie, in its columns.  Strips, one of each table, overlap by twice the
// feather around the seams; a pair is an overlap once it is blended, wider by the transition on both sides.  In 64 bits, so
// that no configuration overflows.
struct PanoramaLayout {
  int64_t seams[2];          // columns a quarter and three quarters of the width
  int64_t band_width;        // of one source of an overlap
  int64_t pair_width;        // of an overlap, blended
  int64_t strip_columns[3];  // left, middle, right: the first
  int64_t strip_widths[3];
  int64_t plain_columns[3];  // of a strip outside the pairs: the first
  int64_t plain_widths[3];
  int64_t pair_columns[2];
};

constexpr PanoramaLayout layout_of(const StitchConfig& config) {
  const int64_t width = config.out_w[0], feather = config.feather, trans = config.trans_width;
  PanoramaLayout l{};
  l.seams[0] = width / 4;
  l.seams[1] = 3 * width / 4;
  l.band_width = trans + 2 * feather;
  l.pair_width = 2 * (trans + feather);
  for (int i = 0; i < 3; ++i) {
    const int64_t end = i < 2 ? l.seams[i] + feather : width;
    l.strip_columns[i] = i > 0 ? l.seams[i - 1] - feather : 0;
    l.strip_widths[i] = end - l.strip_columns[i];
    l.plain_widths[i] = l.strip_widths[i] - (i == 1 ? 2 : 1) * l.band_width;
  }
  for (int i = 0; i < 2; ++i) {
    l.pair_columns[i] = l.plain_columns[i] + l.plain_widths[i];
    l.plain_columns[i + 1] = l.pair_columns[i] + l.pair_width;
  }
  return l;
}

}  // namespace biseam
