#include "driver/setup.hpp"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <numbers>

namespace biseam::bench {

namespace {

std::function<void(const char*)> into(int& number) {
  return [&number](const char* text) { number = std::atoi(text); };
}

std::function<void(const char*)> into(std::string& string) {
  return [&string](const char* text) { string = text; };
}

}  // namespace

Setup read_setup(int argc, char** argv) {
  Setup s;
  const std::map<std::string, std::function<void(const char*)>> options = {
      {"--pictures", into(s.pictures)},
      {"--isa", into(s.isa)},
      {"--camera", into(s.camera)},
      {"--quality", into(s.quality)},
      {"--format", into(s.format)},
      {"--light", into(s.light)},
      {"--near", into(s.near)},
      {"--seams", into(s.seams)},
      {"--interp", into(s.interp)},
      {"--threads", into(s.threads)},
      {"--width", into(s.width)},
      {"--feather", into(s.feather)},
      {"--trans-width", into(s.trans_width)},
      {"--findpath-width", into(s.findpath_width)},
      {"--inv-scale", [&s](const char* text) { s.inv_scale = std::strtof(text, nullptr); }},
  };
  for (int i = 1; i < argc; i += 2) {
    const auto option = options.find(argv[i]);
    if (option == options.end() || i + 1 == argc) {
      std::fprintf(stderr, "no option '%s', or without its value\n", argv[i]);
      std::exit(2);
    }
    option->second(argv[i + 1]);
  }
  return s;
}

StitchConfig make_config(const Setup& s) {
  StitchConfig c = {};
  c.in_h = c.in_w = c.in_luma_stride = c.in_chroma_stride = s.size();
  c.in_yuv_type = c.out_yuv_type = BISEAM_YUV420_SEMIPLANAR;
  c.out_h[0] = s.size();
  c.out_w[0] = c.out_luma_stride[0] = c.out_chroma_stride[0] = s.width;
  c.p0 = c.p1 = static_cast<float>(s.size() / 2.0 / (kFieldOfView / 2 * std::numbers::pi / 180));
  c.cx0 = c.cy0 = c.cx1 = c.cy1 = static_cast<float>(s.size() - 1) / 2;
  c.lens_matrix[0] = c.lens_matrix[4] = c.lens_matrix[8] = 1;
  c.change_focus = 1;
  c.feather = s.feather;
  c.trans_width = s.trans_width;
  c.findpath_width = s.findpath_width;
  c.pyr_level = s.pyr_level;
  c.findpath_enable = 1;
  c.inv_scale = s.inv_scale;
  return c;
}

}  // namespace biseam::bench
