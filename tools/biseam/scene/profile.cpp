#include "scene/profile.hpp"

#include <cmath>

#include "profile/write.hpp"

namespace biseam::scene {
namespace {

constexpr double kThousandths = 1e3, kMillionths = 1e6;

double rounded(double value, double parts) { return std::round(value * parts) / parts; }

profile::LensSettings settings_of(const Lens& lens) {
  profile::LensSettings settings;
  settings.cx = rounded(lens.cx, kThousandths);
  settings.cy = rounded(lens.cy, kThousandths);
  settings.p = rounded(lens.p, kMillionths);
  settings.fov = rounded(lens.fov, kThousandths);
  return settings;
}

}  // namespace

std::string profile_text(const Fisheye& lens0, const Fisheye& lens1, double baseline, int panorama_width) {
  profile::CameraSettings settings;
  settings.width = panorama_width;
  settings.picture = profile::Size{lens0.lens().width, lens0.lens().height};
  if (baseline != 0) settings.baseline = baseline;
  settings.lens[0] = settings_of(lens0.lens());
  settings.lens[1] = settings_of(lens1.lens());
  return profile::write(settings,
                        "Camera of the virtual place: two equidistant fisheyes back to back.  Pixels; p: pixels per radian;\n"
                        "fov: degrees across the image circle.");
}

}  // namespace biseam::scene
