#include "calibrate/calibrate.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "calibrate/estimate.hpp"

namespace biseam::calibrate {
namespace {

// To as many digits as mean something.
double rounded(double value, double unit) { return std::round(value / unit) * unit; }

profile::CameraSettings settings_of(const Camera& camera) {
  profile::CameraSettings settings;
  settings.picture = profile::Size{camera.lens[0].width, camera.lens[0].height};
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = camera.lens[k];
    profile::LensSettings& to = settings.lens[k];
    to.cx = rounded(lens.cx, 0.001);
    to.cy = rounded(lens.cy, 0.001);
    to.p = rounded(lens.p, 0.001);
    to.k = {rounded(lens.k[0], 1e-7), rounded(lens.k[1], 1e-7), rounded(lens.k[2], 1e-7)};
    to.fov = rounded(lens.fov, 0.01);
    to.mount = lens.mount;
  }
  settings.lens[1].yaw = rounded(camera.lens[1].turn.yaw, 1e-4);
  settings.lens[1].pitch = rounded(camera.lens[1].turn.pitch, 1e-4);
  settings.lens[1].roll = rounded(camera.lens[1].turn.roll, 1e-4);
  return settings;
}

template <class... Numbers>
std::string line(const char* format, Numbers... numbers) {
  char text[256];
  std::snprintf(text, sizeof text, format, numbers...);
  return text;
}

// Root mean square, along the ring, of what is far or on a ground; along both where it is far.
std::string octants_of(const Solution& solution) {
  constexpr int kOctants = 8;
  double square[kOctants] = {}, count[kOctants] = {};
  for (std::size_t i = 0; i < solution.remainders.size(); ++i) {
    const Remainder& remainder = solution.remainders[i];
    const int octant = std::clamp(int((remainder.at.t + kPi) / (2 * kPi) * kOctants), 0, kOctants - 1);
    const Share& share = solution.shares[i];
    square[octant] += share.good() * remainder.off.t * remainder.off.t + share.far * remainder.off.b * remainder.off.b;
    count[octant] += share.good() + share.far;
  }
  std::string text = "pixels that are left in each eighth of the ring:";
  for (int i = 0; i < kOctants; ++i) text += count[i] < 1 ? " -" : line(" %.2f", std::sqrt(square[i] / count[i]));
  return text + "\n";
}

std::string summary_of(const Estimate& found) {
  const Values& off = found.deviations;
  std::string text;
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = found.camera.lens[k];
    const std::size_t x = k == 0 ? kCx0 : kCx1, y = k == 0 ? kCy0 : kCy1;
    text += line("lens %d: centre %.1f +-%.1f, %.1f +-%.1f, p %.1f +-%.1f, k %.4f +-%.4f %.4f +-%.4f, mount %d\n", k, lens.cx,
                 off[x], lens.cy, off[y], lens.p, lens.p * off[kScale], lens.k[0], off[kK1], lens.k[1], off[kK2], lens.mount);
  }
  const Turn& turn = found.camera.lens[1].turn;
  text += line("lens 1: yaw %.2f +-%.2f, pitch %.2f +-%.2f, roll %.2f +-%.2f\n", turn.yaw, off[kYaw], turn.pitch, off[kPitch],
               turn.roll, off[kRoll]);
  text += line("%zu matches, %.0f %% of them kept\n", found.matches.size(), 100 * found.kept);
  return text + octants_of(found.solution);
}

}  // namespace

Finding calibrate(const std::vector<LumaPair>& pairs, const ShareWork& share_work) {
  if (pairs.empty()) throw Refusal("no pictures");
  std::vector<Pair> pictures(pairs.size());
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    for (int k = 0; k < 2; ++k) {
      const Luma& luma = pairs[i].lens[k];
      if (luma.width != pairs[0].lens[0].width || luma.height != pairs[0].lens[0].height) {
        throw Refusal("the pictures are not all of one size");
      }
      if (std::min(luma.width, luma.height) < kLeastSide) throw Refusal("the pictures are too small");
      // Never written through.
      pictures[i].lens[k] = cv::Mat1b(luma.height, luma.width, const_cast<std::uint8_t*>(luma.bytes), std::size_t(luma.stride));
    }
  }
  const Estimate found = estimate(pictures, share_work);
  return {settings_of(found.camera), summary_of(found), found.seam_deviation, found.kept};
}

}  // namespace biseam::calibrate
