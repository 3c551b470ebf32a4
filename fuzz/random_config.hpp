#pragma once

#include <cstring>

#include "biseam/records.h"
#include "fuzz/input.hpp"

namespace biseam::fuzz {

// A small configuration that keeps most rules, from 21 bytes; zeros give the least panorama.
inline StitchConfig draw_config(Input& input) {
  StitchConfig config{};
  config.in_h = config.out_h[0] = 4 * input.between(6, 24);
  config.in_w = 2 * input.between(12, 48);
  config.out_w[0] = 4 * input.between(16, 48);
  config.in_luma_stride = config.in_w + input.between(0, 9);
  config.in_chroma_stride = config.in_w + input.between(0, 9);
  config.out_luma_stride[0] = config.out_w[0] + input.between(0, 9);
  config.out_chroma_stride[0] = config.out_w[0] + 2 * input.between(0, 4);
  config.in_yuv_type = config.out_yuv_type = input.flag() ? BISEAM_YUV422_SEMIPLANAR : BISEAM_YUV420_SEMIPLANAR;
  config.out_flip[0] = input.flag();
  config.out_mirror[0] = input.flag();
  // The sphere's half takes 90 degrees to each side of an axis and the overlaps some more.
  const float side = static_cast<float>(config.in_w < config.in_h ? config.in_w : config.in_h);
  config.p0 = side * (0.16f + 0.0005f * static_cast<float>(input.between(0, 200)));
  config.p1 = side * (0.16f + 0.0005f * static_cast<float>(input.between(0, 200)));
  config.cx0 = config.cx1 = static_cast<float>(config.in_w) * 0.5f + 0.125f * static_cast<float>(input.between(0, 16) - 4);
  config.cy0 = config.cy1 = static_cast<float>(config.in_h) * 0.5f - 0.125f * static_cast<float>(input.between(0, 16) - 4);
  config.lens_matrix[0] = config.lens_matrix[4] = config.lens_matrix[8] = 1;
  config.lens_matrix[1] = 0.001f * static_cast<float>(input.between(0, 40));
  config.lens_matrix[3] = -config.lens_matrix[1];
  config.change_focus = 1;
  config.findpath_enable = input.flag() ? 0 : 1;
  config.feather = input.between(3, 10);
  config.trans_width = 2 * input.between(0, 6);
  config.findpath_width = 2 * config.feather - input.between(0, 3);
  config.pyr_level = input.between(1, 4);
  config.inv_scale = 1.0f + 0.125f * static_cast<float>(input.between(0, 16));
  if ((config.out_w[0] / 4 - config.feather - config.trans_width) % 2 != 0) ++config.feather;
  return config;
}

// A field becomes any 32 bits: every field is one word.
inline void set_word(StitchConfig& config, std::uint32_t field, std::uint32_t value) {
  constexpr std::size_t kWords = sizeof(StitchConfig) / sizeof value;
  std::memcpy(reinterpret_cast<char*>(&config) + field % kWords * sizeof value, &value, sizeof value);
}

}  // namespace biseam::fuzz
