#include "calibrate/calibrate.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "calibrate/circle.hpp"
#include "calibrate/estimate.hpp"
#include "calibrate/finding.hpp"
#include "camera/rules.hpp"

namespace biseam::calibrate {
namespace {

std::vector<Pair> pictures_of(const std::vector<LumaPair>& pairs) {
  std::vector<Pair> pictures(pairs.size());
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    for (int k = 0; k < 2; ++k) {
      const Luma& luma = pairs[i].lens[k];
      // Never written through.
      pictures[i].lens[k] = cv::Mat1b(luma.height, luma.width, const_cast<std::uint8_t*>(luma.bytes), std::size_t(luma.stride));
    }
  }
  return pictures;
}

void check_sizes(const std::vector<LumaPair>& pairs) {
  if (pairs.empty()) throw Refusal("no pictures");
  for (const LumaPair& pair : pairs) {
    for (const Luma& luma : pair.lens) {
      if (luma.width != pairs[0].lens[0].width || luma.height != pairs[0].lens[0].height) {
        throw Refusal("the pictures are not all of one size");
      }
      if (std::min(luma.width, luma.height) < kLeastSide) throw Refusal("the pictures are too small");
    }
  }
}

bool is_turned(const profile::LensSettings& lens) {
  return lens.yaw.value_or(0) != 0 || lens.pitch.value_or(0) != 0 || lens.roll.value_or(0) != 0;
}

// The start as the numbers that are sought.
Known known_of(const Options& options, const Luma& picture) {
  const profile::CameraSettings& start = *options.start;
  const profile::Size size{picture.width, picture.height};
  if (is_turned(start.lens[0])) throw Refusal("the profile to start from has lens 0 turned; only lens 1 may be");
  Known known;
  known.frame = {picture.width, picture.height, {0, 0}};
  double p[2], k1[2], k2[2], k3[2];
  for (int k = 0; k < 2; ++k) {
    const profile::LensSettings lens =
        profile::scale_lens(start.lens[k], start.picture.value_or(size), size, "the profile to start from");
    if (!lens.p || !lens.cx || !lens.cy) throw Refusal("the profile to start from must have p, cx and cy of both lenses");
    const std::array<double, 3> terms = lens.k.value_or(std::array<double, 3>{});
    p[k] = *lens.p;
    k1[k] = terms[0];
    k2[k] = terms[1];
    k3[k] = terms[2];
    known.values[k == 0 ? kCx0 : kCx1] = *lens.cx;
    known.values[k == 0 ? kCy0 : kCy1] = *lens.cy;
    known.frame.mount[k] = lens.mount.value_or(0);
  }
  if (options.hold_k && k3[0] != k3[1]) throw Refusal("third terms of k can't be held: both lenses have the same");
  known.values[kScale] = 0.5 * (std::log(p[0]) + std::log(p[1]));
  known.values[kScaleRatio] = std::log(p[1] / p[0]);
  known.values[kK1] = 0.5 * (k1[0] + k1[1]);
  known.values[kK2] = 0.5 * (k2[0] + k2[1]);
  known.values[kK3] = 0.5 * (k3[0] + k3[1]);
  known.values[kK1Apart] = k1[1] - k1[0];
  known.values[kK2Apart] = k2[1] - k2[0];
  known.values[kYaw] = start.lens[1].yaw.value_or(0);
  known.values[kPitch] = start.lens[1].pitch.value_or(0);
  known.values[kRoll] = start.lens[1].roll.value_or(0);
  known.values[kRim] = 0.5 * start.lens[0].fov.value_or(kUsualFov);
  const auto hold = [&](bool holds, std::initializer_list<Parameter> parameters) {
    for (const Parameter parameter : parameters) known.held[parameter] = holds;
  };
  hold(options.hold_scale, {kScale, kScaleRatio});
  hold(options.hold_k, {kK1, kK2, kK3, kK1Apart, kK2Apart});
  hold(options.hold_centre, {kCx0, kCy0, kCx1, kCy1});
  hold(options.hold_turn, {kYaw, kPitch, kRoll});
  return known;
}

}  // namespace

Finding calibrate(const std::vector<LumaPair>& pairs, const Options& options, const ShareWork& share_work) {
  check_sizes(pairs);
  std::optional<Known> known;
  if (options.start) known = known_of(options, pairs[0].lens[0]);
  const Estimate found = estimate(pictures_of(pairs), known, share_work);
  if (options.in_lens && found.tracks == 0) {
    throw Refusal("from picture to picture the camera doesn't turn by a few degrees, so that only the ring is seen");
  }
  return finding_of(found);
}

profile::CameraSettings circles(const std::vector<LumaPair>& pairs, const ShareWork& share_work) {
  constexpr double kMostApart = 0.05;  // of the radii, each over its picture's side: sizes may differ
  const std::vector<Pair> pictures = pictures_of(pairs);
  std::optional<Circle> found[2];
  share_work(2, [&](int k) {
    std::vector<cv::Mat1b> frames;
    for (const Pair& pair : pictures) {
      if (pair.lens[k].size() == pictures.front().lens[k].size()) frames.push_back(pair.lens[k]);
    }
    if (std::min(frames.front().cols, frames.front().rows) >= kLeastSide) found[k] = find_circle(frames);
  });
  if (!found[0] || !found[1]) return {};
  const auto share_of = [&](int k) {
    const cv::Mat1b& picture = pictures.front().lens[k];
    return found[k]->radius / std::min(picture.cols, picture.rows);
  };
  if (std::abs(share_of(0) - share_of(1)) > kMostApart * share_of(0)) return {};
  profile::CameraSettings settings;
  Camera camera;
  for (int k = 0; k < 2; ++k) {
    const cv::Mat1b& picture = pictures.front().lens[k];
    profile::LensSettings& to = settings.lens[k];
    Lens& lens = camera.lens[k] = usual_lens(picture.cols, picture.rows);
    to.cx = lens.cx = rounded(found[k]->cx, 3);
    to.cy = lens.cy = rounded(found[k]->cy, 3);
    to.p = lens.p = rounded(found[k]->radius / (kUsualFov / 2 * kDegree), 3);
  }
  return check_camera(camera) ? profile::CameraSettings() : settings;
}

}  // namespace biseam::calibrate
