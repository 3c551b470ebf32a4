#include "stitch/ring_engine.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/failure.hpp"
#include "base/share_work.hpp"
#include "base/thread_count.hpp"
#include "camera/view.hpp"

namespace biseam::tool {
namespace {

BiseamPanoramaOptions ring_options(const Setup& setup, const EngineOptions& options, SampleKind samples) {
  BiseamPanoramaOptions all = panorama_defaults();
  all.width = setup.width;
  all.height = setup.width / 2;
  all.format = samples.format;
  all.range = samples.range;
  all.quality = options.quality;
  const BiseamSeam searched = options.steady_seams ? BISEAM_SEAM_STEADY : BISEAM_SEAM_SEARCH;
  all.seam = setup.blend.search.value_or(true) ? searched : BISEAM_SEAM_MIDDLE;
  all.threads = options.threads;
  all.light = options.light;
  all.near = matches_near(setup, options) ? BISEAM_NEAR_MATCH : BISEAM_NEAR_OFF;
  all.transfer = samples.transfer;
  all.rate = std::clamp(samples.rate, 1.0, 1000.0);
  return all;
}

Failure failure_of(const BiseamError& error, const Setup& setup) {
  if (error.code == BISEAM_NO_MEMORY) return Failure(ExitCode::system, error.text);
  const bool by_profile = error.code == BISEAM_INVALID_CAMERA && !setup.profile.empty();
  return Failure(ExitCode::settings, by_profile ? setup.profile + ": " + error.text : error.text);
}

// The seam beside the ring's place that a direction belongs to, by the nearest samples.
double seam_beside(const std::vector<double>& seam, const Vec3& direction) {
  const double turns = std::atan2(direction.y, direction.x) / (2 * std::numbers::pi), length = double(seam.size());
  const double at = (turns < 0 ? turns + 1 : turns) * length, share = at - std::floor(at);
  const std::size_t first = std::size_t(at) % seam.size(), second = (first + 1) % seam.size();
  return seam[first] + share * (seam[second] - seam[first]);
}

}  // namespace

RingEngine::RingEngine(const Setup& setup, const EngineOptions& options, SampleKind samples)
    : setup_(setup), format_(samples.format), panorama_(Panorama::open(setup.camera, ring_options(setup, options, samples))) {
  if (!panorama_) throw failure_of(panorama_.error(), setup_);
  frame_.turn = options.look;
  seam_.resize(std::size_t(panorama_.seam_length()));
}

void RingEngine::stitch(const BiseamPicture (&fisheyes)[2], const BiseamPicture& panorama, Seams seams) {
  const bool keeps = seams == Seams::kept && has_seam_;
  frame_.seam = keeps ? seam_.data() : nullptr;
  if (const PanoramaError error = panorama_.stitch(fisheyes, panorama, frame_)) throw failure_of(error, setup_);
  if (!keeps) panorama_.seam(seam_.data());
  has_seam_ = true;
}

void RingEngine::follow(const BiseamPicture (&fisheyes)[2], const BiseamPicture& panorama,
                        std::span<const std::uint8_t> guide) {
  BiseamFrame frame = frame_;
  frame.seam = nullptr;
  frame.guide = guide.data();
  frame.guide_size = guide.size();
  if (const PanoramaError error = panorama_.stitch(fisheyes, panorama, frame)) throw failure_of(error, setup_);
  panorama_.seam(seam_.data());
}

void RingEngine::measure(const BiseamPicture (&fisheyes)[2], std::span<std::uint8_t> guide) {
  if (const PanoramaError error = panorama_.measure(fisheyes, guide.data())) throw failure_of(error, setup_);
}

void RingEngine::smooth(const std::vector<const void*>& guides, int index, std::span<std::uint8_t> smoothed) const {
  const PanoramaError error = panorama_.smooth(guides.data(), int(guides.size()), index, smoothed.data());
  if (error) throw failure_of(error, setup_);
}

SeamPath RingEngine::seam_path() const {
  SeamPath path = seam_;
  for (double& place : path) place *= setup_.width / 360.0;
  return path;
}

SeamMap RingEngine::seam_map() const {
  SeamMap map{{setup_.width, setup_.width / 2}, {}};
  map.zones.resize(std::size_t(map.size.width) * std::size_t(map.size.height));
  const View view{map.size.width, map.size.height, {frame_.turn.yaw, frame_.turn.pitch, frame_.turn.roll}};
  share_work(map.size.height, usual_threads(), [&](int y) {
    Zone* row = &map.zones[std::size_t(y) * std::size_t(map.size.width)];
    for (int x = 0; x < map.size.width; ++x) {
      const Vec3 direction = direction_at(view, x, y);
      const double across = std::asin(std::clamp(direction.z, -1.0, 1.0)) * 180 / std::numbers::pi;
      if (std::abs(across) > panorama_.ring()) continue;
      row[x] = across < seam_beside(seam_, direction) ? Zone::lens0_side : Zone::lens1_side;
    }
  });
  return map;
}

}  // namespace biseam::tool
