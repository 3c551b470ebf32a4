#include "frame/plain_frame.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "biseam/biseam.h"

namespace biseam::test {

namespace {

bool half_height_chroma(int format) { return format < 4; }

ImageHeader describe(FramePlanes& planes, int width, int height, int luma_stride, int chroma_stride, int format) {
  ImageHeader h{};
  h.width = width;
  h.height = height;
  h.planes[0] = planes.luma.data();
  h.planes[1] = planes.chroma.data();
  h.strides[0] = luma_stride;
  h.strides[1] = h.strides[2] = chroma_stride;
  h.format = format;
  return h;
}

uint8_t scene(int x, int y, int k) {
  const double wave = std::sin(x * 0.05 + k) * std::cos(y * 0.07 - k) * 90 + 128;
  return static_cast<uint8_t>(wave);
}

}  // namespace

FisheyePair random_fisheyes(RandomSource& random, const StitchConfig& c) {
  FisheyePair pair;
  const int phase = random.between(0, 100);
  for (int k = 0; k < 2; ++k) {
    pair[size_t(k)] = {Bytes(size_t(c.in_luma_stride) * size_t(c.in_h)), Bytes(size_t(c.in_chroma_stride) * size_t(c.in_h))};
    for (int y = 0; y < c.in_h; ++y) {
      for (int x = 0; x < c.in_luma_stride; ++x) {
        pair[size_t(k)].luma[size_t(y * c.in_luma_stride + x)] =
            static_cast<uint8_t>(scene(x, y, phase + k) + random.between(0, 20));
      }
      for (int x = 0; x < c.in_chroma_stride; ++x) {
        pair[size_t(k)].chroma[size_t(y * c.in_chroma_stride + x)] =
            static_cast<uint8_t>(scene(y, x, phase - k) + random.between(0, 9));
      }
    }
  }
  return pair;
}

FramePlanes blank_panorama(const StitchConfig& c) {
  const size_t rows = size_t(std::max({c.out_h[0], c.in_h, 1}));
  return {Bytes(size_t(c.out_luma_stride[0]) * rows, 0xA5), Bytes(size_t(c.out_chroma_stride[0]) * rows, 0x5A)};
}

PlainFrame::PlainFrame(const StitchConfig& config) : config_(config) {
  const int w = config.out_w[0], f = config.feather;
  rows_ = std::min(config.in_h, config.out_h[0]);
  seams_[0] = w / 4;
  seams_[1] = 3 * w / 4;
  band_width_ = config.trans_width + 2 * f;
  pair_width_ = 2 * (config.trans_width + f);
  first_[0] = 0;
  first_[1] = seams_[0] - f;
  first_[2] = seams_[1] - f;
  width_[0] = seams_[0] + f;
  width_[1] = seams_[1] + f - first_[1];
  width_[2] = w - first_[2];
  build_tables();
  for (Band& band : bands_) band = make_band(band_width_);
  for (Band& result : results_) result = make_band(pair_width_);
  make_blend_instances();
}

void PlainFrame::build_tables() {
  const int w = config_.out_w[0], h = config_.out_h[0];
  const float column_step = static_cast<float>(6.283185307179586 / w);
  const float columns[3] = {
      1.5707964f, static_cast<float>(static_cast<double>(static_cast<float>(first_[1]) * column_step) - 1.5707963267948966),
      static_cast<float>(static_cast<double>(static_cast<float>(first_[2]) * column_step) - 4.71238898038469)};
  for (int strip = 0; strip < 3; ++strip) {
    LensRecord lens{};
    lens.focal = strip == 1 ? config_.p1 : config_.p0;
    lens.cx = strip == 1 ? config_.cx1 : config_.cx0;
    lens.cy = strip == 1 ? config_.cy1 : config_.cy0;
    lens.column_step = column_step;
    lens.row_step = static_cast<float>(3.141592653589793 / h);
    lens.width = width_[strip];
    lens.rows = h;
    lens.column_offset = columns[strip];
    lens.focus = config_.change_focus;
    for (int i = 0; i < 9; ++i) lens.matrix[i] = strip == 1 ? config_.lens_matrix[i] : i % 4 == 0 ? 1.0f : 0.0f;
    tables_[strip].assign(2 * size_t(width_[strip]) * size_t(std::max(h, 0)) + 8, 0.0f);
    MAPTIHeader map = {tables_[strip].data()};
    LutBuilderArgs args = {width_[strip], h, &map, &lens, 0};
    CreateLUTTablePht(&args);
  }
}

PlainFrame::Band PlainFrame::make_band(int width) const {
  Band band;
  const size_t pixels = size_t(width) * size_t(config_.in_h);
  band.luma.assign(pixels, 0);
  band.chroma.assign(pixels, 0);
  band.rgb.assign(3 * pixels, 0);
  band.header = {};
  init_image_header(&band.header, width, config_.in_h, width, width, config_.in_yuv_type);
  band.header.planes[0] = band.luma.data();
  band.header.planes[1] = band.chroma.data();
  band.image = {};
  band.image.data[0] = band.rgb.data();
  init_blendimage_header(&band.image, width, config_.in_h, 7);
  return band;
}

void PlainFrame::make_blend_instances() {
  BlendConfig settings = {config_.trans_width, config_.findpath_width, band_width_, config_.in_h, config_.pyr_level,
                          config_.inv_scale,   config_.findpath_enable};
  for (int k = 0; k < 2; ++k) {
    BlendMemory memory;
    GetMemSize(&settings, &memory);
    blend_blocks_[k].assign(memory.size / 8 + 1, 0);
    memory.base = blend_blocks_[k].data();
    blends_[k] = {};
    Blend_Creat(&settings, &memory, &blends_[k]);
    SetConfig_Blend(&blends_[k]);
  }
}

void PlainFrame::remap_part(int strip, ImageHeader& source, ImageHeader& destination, int table_column, int destination_column,
                            int count, int first_row, int end_row) {
  remap_ypoint(tables_[strip].data(), width_[strip], table_column, &source, &destination, destination_column, count, first_row,
               end_row, 2, half_height_chroma(config_.in_yuv_type) ? 2 : 1);
}

void PlainFrame::remap(FisheyePair& fisheyes, ImageHeader& panorama) {
  ImageHeader sources[2];
  for (int k = 0; k < 2; ++k) {
    sources[k] = describe(fisheyes[size_t(k)], config_.in_w, config_.in_h, config_.in_luma_stride, config_.in_chroma_stride,
                          config_.in_yuv_type);
  }
  // Plain columns lie between the blended pairs; the bands overlap them by the transition width.
  const int left = seams_[0] - pair_width_ / 2, middle = left + pair_width_, right = seams_[1] + pair_width_ / 2;
  const int left_band = width_[0] - band_width_, middle_band = width_[1] - band_width_;
  remap_part(0, sources[0], panorama, 0, 0, left, 0, rows_);
  remap_part(0, sources[0], bands_[0].header, left_band, 0, band_width_, 0, rows_);
  for (const auto& [first, end] : {std::pair{0, rows_ / 2}, std::pair{rows_ / 2, rows_}}) {
    remap_part(1, sources[1], bands_[1].header, 0, 0, band_width_, first, end);
    remap_part(1, sources[1], panorama, middle - first_[1], middle, seams_[1] - pair_width_ / 2 - middle, first, end);
    remap_part(1, sources[1], bands_[2].header, middle_band, 0, band_width_, first, end);
  }
  remap_part(2, sources[0], panorama, right - first_[2], right, config_.out_w[0] - right, 0, rows_);
  remap_part(2, sources[0], bands_[3].header, 0, 0, band_width_, 0, rows_);
}

void PlainFrame::blend() {
  const bool half = half_height_chroma(config_.in_yuv_type);
  for (Band& band : bands_) {
    YuvView yuv = {band.luma.data(), band.chroma.data(), band_width_, config_.in_h, band_width_, band_width_};
    RgbView rgb = {band.rgb.data(), band_width_, config_.in_h, 3 * band_width_};
    (half ? yuv420_2rgb : yuv422_2rgb)(&yuv, &rgb);
  }
  for (int k = 0; k < 2; ++k) {
    Blend_Proc(&blends_[k], &bands_[2 * k].image, &bands_[2 * k + 1].image, &results_[k].image);
    YuvView yuv = {results_[k].luma.data(), results_[k].chroma.data(), 0, 0, 0, 0};
    RgbView rgb = {results_[k].rgb.data(), pair_width_, config_.in_h, 3 * pair_width_};
    (half ? rgb2yuv420 : rgb2yuv422)(&yuv, &rgb);
  }
}

void PlainFrame::compose(FramePlanes& panorama) const {
  const int chroma_rows = config_.in_yuv_type == 0 ? rows_ / 2 : rows_;
  const int left_inner = seams_[0] - pair_width_ / 2, middle_inner = seams_[1] - seams_[0] - pair_width_;
  for (int k = 0; k < 2; ++k) {
    const int column = left_inner + k * (pair_width_ + middle_inner);
    for (int y = 0; y < rows_; ++y) {
      std::copy_n(results_[k].luma.begin() + y * pair_width_, pair_width_,
                  panorama.luma.begin() + y * config_.out_luma_stride[0] + column);
    }
    const int pair = left_inner / 2 + k * (pair_width_ / 2 + middle_inner / 2);
    for (int y = 0; y < chroma_rows; ++y) {
      std::copy_n(results_[k].chroma.begin() + y * pair_width_, pair_width_ / 2 * 2,
                  panorama.chroma.begin() + y * config_.out_chroma_stride[0] + 2 * pair);
    }
  }
}

void PlainFrame::exchange_rows(FramePlanes& panorama) const {
  const int format = config_.out_yuv_type, h = config_.out_h[0], w = config_.out_w[0];
  if (format != 0 && format != 1 && format != 4 && format != 5) return;
  for (int y = 0; y < h / 2; ++y) {
    const auto row = panorama.luma.begin() + y * config_.out_luma_stride[0];
    std::swap_ranges(row, row + w, panorama.luma.begin() + (h - 1 - y) * config_.out_luma_stride[0]);
  }
  const int chroma_rows = half_height_chroma(format) ? h / 2 : h, units = config_.out_chroma_stride[0] / 2;
  for (int y = 0; y < chroma_rows / 2; ++y) {
    const auto row = panorama.chroma.begin() + 2 * y * units;
    std::swap_ranges(row, row + w / 2 * 2, panorama.chroma.begin() + 2 * (chroma_rows - 1 - y) * units);
  }
}

void PlainFrame::exchange_columns(FramePlanes& panorama) const {
  const int format = config_.out_yuv_type, h = config_.out_h[0], w = config_.out_w[0];
  if (format != 0 && format != 1 && format != 4 && format != 5) return;
  for (int y = 0; y < h; ++y) {
    const auto row = panorama.luma.begin() + y * config_.out_luma_stride[0];
    std::reverse(row, row + w);
  }
  const int units = config_.out_chroma_stride[0] / 2;
  for (int y = 0; y < (half_height_chroma(format) ? h / 2 : h); ++y) {
    uint8_t* row = panorama.chroma.data() + 2 * y * units;
    for (int a = 0, b = w / 2 - 1; a < b; ++a, --b) std::swap_ranges(row + 2 * a, row + 2 * a + 2, row + 2 * b);
  }
}

void PlainFrame::process(FisheyePair& fisheyes, FramePlanes& panorama) {
  ImageHeader out = describe(panorama, config_.out_w[0], config_.out_h[0], config_.out_luma_stride[0],
                             config_.out_chroma_stride[0], config_.out_yuv_type);
  remap(fisheyes, out);
  blend();
  compose(panorama);
  if (config_.out_flip[0] != 0) exchange_rows(panorama);
  if (config_.out_mirror[0] != 0) exchange_columns(panorama);
}

}  // namespace biseam::test
