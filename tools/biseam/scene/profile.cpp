#include "scene/profile.hpp"

#include <cmath>

#include "base/angle.hpp"
#include "profile/write.hpp"

namespace biseam::scene {
namespace {

constexpr double kThousandths = 1e3, kMillionths = 1e6;

double rounded(double value, double parts) { return std::round(value * parts) / parts; }

profile::LensSettings settings_of(const Fisheye& lens) {
  profile::LensSettings settings;
  settings.cx = rounded(lens.centre.u, kThousandths);
  settings.cy = rounded(lens.centre.v, kThousandths);
  settings.p = rounded(lens.pixels_per_radian, kMillionths);
  settings.fov = rounded(lens.field_of_view / tool::kDegree, kThousandths);
  return settings;
}

}  // namespace

std::string profile_text(const Fisheye& lens0, const Fisheye& lens1, int panorama_width) {
  profile::CameraSettings settings;
  settings.width = panorama_width;
  settings.picture = profile::Size{lens0.size, lens0.size};
  settings.lens[0] = settings_of(lens0);
  settings.lens[1] = settings_of(lens1);
  return profile::write(settings,
                        "Camera of the virtual place: two equidistant fisheyes back to back.  Pixels; p: pixels per radian;\n"
                        "fov: degrees across the image circle.");
}

}  // namespace biseam::scene
