#include "scene/profile.hpp"

#include <cstdio>
#include <numbers>

namespace biseam::scene {

static std::string lens_text(const Fisheye& lens) {
  char text[200];
  std::snprintf(text, sizeof text, "\n[lens%d]\ncx = %.3f\ncy = %.3f\np = %.6f\nfov = %.3f\n", lens.index, lens.centre.u,
                lens.centre.v, lens.pixels_per_radian, lens.field_of_view * 180 / std::numbers::pi);
  return text;
}

std::string profile_text(const Fisheye& lens0, const Fisheye& lens1, int panorama_width) {
  char text[300];
  std::snprintf(text, sizeof text,
                "# Camera of the virtual place: two equidistant fisheyes back to back.  Pixels; p: pixels per radian;\n"
                "# fov: degrees across the image circle.\n"
                "width = %d\n\n[picture]\nwidth = %d\nheight = %d\n",
                panorama_width, lens0.size, lens0.size);
  return text + lens_text(lens0) + lens_text(lens1);
}

}  // namespace biseam::scene
