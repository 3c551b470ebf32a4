#include "calibrate/finding.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "calibrate/estimate.hpp"
#include "calibrate/explain.hpp"

namespace biseam::calibrate {
namespace {

profile::CameraSettings settings_of(const Camera& camera) {
  profile::CameraSettings settings;
  settings.picture = profile::Size{camera.lens[0].width, camera.lens[0].height};
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = camera.lens[k];
    profile::LensSettings& to = settings.lens[k];
    to.cx = rounded(lens.cx, 3);
    to.cy = rounded(lens.cy, 3);
    to.p = rounded(lens.p, 3);
    to.k = {rounded(lens.k[0], 7), rounded(lens.k[1], 7), rounded(lens.k[2], 7)};
    to.fov = rounded(lens.fov, 2);
    to.mount = lens.mount;
  }
  settings.lens[1].yaw = rounded(camera.lens[1].turn.yaw, 4);
  settings.lens[1].pitch = rounded(camera.lens[1].turn.pitch, 4);
  settings.lens[1].roll = rounded(camera.lens[1].turn.roll, 4);
  return settings;
}

template <class... Numbers>
std::string line(const char* format, Numbers... numbers) {
  char text[256];
  std::snprintf(text, sizeof text, format, numbers...);
  return text;
}

// Root mean square, along the ring, of what is far or on a ground; both ways of what is far, as all is that would lie on a
// ground where that isn't raised.
Octants octants_of(const Estimate& found) {
  const Solution& solution = found.solution;
  const double scale = across_scale(found.camera);
  Octants square{}, count{};
  for (std::size_t i = 0; i < solution.remainders.size(); ++i) {
    const Remainder& remainder = solution.remainders[i];
    const auto octant = std::size_t(std::clamp(int((remainder.at.t + kPi) / (2 * kPi) * kOctants), 0, kOctants - 1));
    const Share& share = solution.shares[i];
    const double along = solution.along[i], across = remainder.off.b / scale;
    const bool raised = parallax_of(solution.grounds[std::size_t(found.matches[i].pair)], remainder.at) > 0;
    const double far = share.far + (raised ? 0 : share.ground);
    square[octant] += share.good() * along * along + far * across * across;
    count[octant] += share.good() + far;
  }
  Octants left;
  for (std::size_t i = 0; i < kOctants; ++i) left[i] = count[i] < 1 ? -1 : std::sqrt(square[i] / count[i]);
  return left;
}

std::string text_of(const Octants& octants) {
  std::string text = "pixels that are left in each eighth of the ring:";
  for (const double left : octants) text += left < 0 ? " -" : line(" %.2f", left);
  return text + "\n";
}

// The parts that are explained by nearness are far from 0 only on the positive side.
std::vector<ExplainedMatch> matches_of(const Estimate& found) {
  const Solution& solution = found.solution;
  const double scale = across_scale(found.camera) * kPixelsPerRadian;
  std::vector<ExplainedMatch> matches;
  matches.reserve(found.matches.size());
  for (std::size_t i = 0; i < found.matches.size(); ++i) {
    const Remainder& remainder = solution.remainders[i];
    const Share& share = solution.shares[i];
    const double parallax = parallax_of(solution.grounds[std::size_t(found.matches[i].pair)], remainder.at);
    double across = remainder.off.b;
    if (share.near > std::max(share.far, share.ground)) {
      across = std::min(across, 0.0);
    } else if (share.ground > share.far) {
      across -= parallax;
    }
    matches.push_back(
        {found.matches[i], remainder.at, solution.along[i] / kPixelsPerRadian, across / scale, share.good() > 0.5});
  }
  return matches;
}

// What nearness displaces grows from nothing, so that noise alone gives some ground in some direction.
std::optional<Baseline> baseline_of(const Estimate& found) {
  constexpr double kClear = 5;             // standard deviations
  constexpr double kLeastParallax = 0.25;  // pixels
  const GroundMean mean = mean_ground(found.solution);
  if (!(mean.parallax > std::max(kLeastParallax, kClear * mean.deviation))) return std::nullopt;
  const double scale = across_scale(found.camera) * kPixelsPerRadian;
  return Baseline{mean.parallax / scale, mean.deviation / scale};
}

std::string text_of(const std::optional<Baseline>& baseline) {
  if (!baseline) return "baseline: none shows\n";
  constexpr double kUsualHeight = 1500;  // millimetres
  return line("baseline: %.4f +-%.4f of the distance of the ground or wall, %.0f mm if that is 1.5 m away\n", baseline->share,
              baseline->deviation, kUsualHeight * baseline->share);
}

// The ends of the circles tell it, with how the lenses bend at the ring, and what lenses usually are like.
std::string text_of_view(const Finding& finding, double loose_rim) {
  constexpr double kLeast = 185, kMost = 220, kMostDeviation = 5;  // degrees
  constexpr double kDecided = 1.4;                                 // where so much is lost with it, it decides
  const double fov = 0.5 * (finding.camera.lens[0].fov + finding.camera.lens[1].fov), deviation = finding.deviations[kRim];
  const char* doubt = fov < kLeast || fov > kMost      ? ", which is unusual: straight lines may not stay straight"
                      : 2 * deviation > kMostDeviation ? "; it is not well known: straight lines may not stay straight"
                      : loose_rim > kDecided * deviation
                          ? "; known more from what lenses usually are like than from these pictures"
                          : "";
  return line("angle of view: %.1f +-%.1f degrees%s\n", fov, 2 * deviation, doubt);
}

// Things at all distances tell it.
std::string text_of_beside(const Estimate& found) {
  const Solution& solution = found.solution;
  if (!solution.scatter.scattered) return "";
  const double scale = across_scale(found.camera);
  return line("things lie at all distances; along the axis lens 1 stands 1, beside it %.2f +-%.2f, %.2f +-%.2f\n",
              scale * solution.values[kBesideX], scale * found.deviations[kBesideX], scale * solution.values[kBesideY],
              scale * found.deviations[kBesideY]);
}

std::string summary_of(const Finding& finding, const Estimate& found) {
  const Values& off = finding.deviations;
  std::string text;
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = finding.camera.lens[k];
    const std::size_t x = k == 0 ? kCx0 : kCx1, y = k == 0 ? kCy0 : kCy1;
    text += line("lens %d: centre %.1f +-%.1f, %.1f +-%.1f, p %.1f +-%.1f, k %.4f +-%.4f %.4f +-%.4f %.4f +-%.4f, mount %d\n",
                 k, lens.cx, off[x], lens.cy, off[y], lens.p, lens.p * off[kScale], lens.k[0], off[kK1], lens.k[1], off[kK2],
                 lens.k[2], off[kK3], lens.mount);
  }
  text += text_of_view(finding, found.loose_rim);
  const Turn& turn = finding.camera.lens[1].turn;
  text += line("lens 1: yaw %.2f +-%.2f, pitch %.2f +-%.2f, roll %.2f +-%.2f\n", turn.yaw, off[kYaw], turn.pitch, off[kPitch],
               turn.roll, off[kRoll]);
  text += text_of(finding.baseline);
  text += text_of_beside(found);
  text += line("%zu matches, %.0f %% of them kept\n", finding.matches.size(), 100 * finding.kept);
  if (finding.tracks > 0) text += line("%zu tracks within the lenses, as the camera turns\n", finding.tracks);
  text +=
      line("far things meet at the seams within %.2f pixels of a panorama 3840 wide, %.2f in the worst eighth of the ring\n",
           2 * finding.seam_deviation, 2 * finding.worst_deviation);
  return text + text_of(finding.left);
}

}  // namespace

double rounded(double value, int digits) {
  const double units = std::pow(10, digits);
  return std::round(value * units) / units;
}

double ExplainedMatch::pixels() const { return std::hypot(around, across) * kPixelsPerRadian; }

double Finding::worst() const { return *std::max_element(left.begin(), left.end()); }

Finding finding_of(const Estimate& found) {
  Finding finding{
      settings_of(found.camera), found.start, found.camera, found.deviations,   octants_of(found), found.seam_deviation,
      found.worst_deviation,     found.kept,  found.tracks, baseline_of(found), matches_of(found), ""};
  finding.summary = summary_of(finding, found);
  return finding;
}

}  // namespace biseam::calibrate
