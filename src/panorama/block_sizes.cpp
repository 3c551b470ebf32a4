#include "panorama/block_sizes.hpp"

namespace biseam {

namespace {
// Room for the 128-byte rounding of the pieces, and of the whole.
constexpr double kSlack = 4096 + 128;
}  // namespace

double working_bytes(const StitchConfig& config) {
  const double rows = config.in_h, pair = static_cast<double>(pair_width(config));
  const double strides = static_cast<double>(config.out_luma_stride[0]) + config.out_chroma_stride[0];
  const double band = pair - config.trans_width;
  const double table_columns = config.out_w[0] + 4.0 * config.feather;
  return rows * (strides + 56 * band + 28 * pair + 8 * table_columns) + kSlack;
}

double blend_bytes(const StitchConfig& config) {
  constexpr double kRgb = 3 * sizeof(int32_t), kGray = sizeof(int32_t);
  const int64_t pair = pair_width(config);
  const double search_rows = static_cast<double>(shrink(config.in_h, config.inv_scale));
  const double search_width = static_cast<double>(shrink(config.findpath_width, config.inv_scale));
  const double mask_width = static_cast<double>(shrink(pair, config.inv_scale));

  double bytes = 4.0 * sizeof(BlendImage) * config.pyr_level + kSlack;
  bytes += 2 * kRgb * config.findpath_width * config.in_h;
  bytes += 3 * kRgb * static_cast<double>(pair) * config.in_h;
  bytes += (2 * kRgb + 4 * kGray) * search_width * search_rows;
  bytes += kRgb * mask_width * search_rows;
  int64_t width = pair, height = config.in_h;
  for (int level = 0; level <= config.pyr_level; ++level) {
    bytes += 4 * kRgb * static_cast<double>(width) * static_cast<double>(height);
    width = (width + 1) / 2;
    height = (height + 1) / 2;
  }
  return bytes;
}

}  // namespace biseam
