#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "biseam/panorama.hpp"
#include "stitch/engine.hpp"

namespace biseam::tool {

class RingEngine : public Engine {
 public:
  RingEngine(const Setup& setup, const EngineOptions& options, SampleKind samples);

  BiseamFormat format() const override { return format_; }
  void stitch(const BiseamPicture (&fisheyes)[2], const BiseamPicture& panorama, Seams seams) override;
  // The same by a guide of an analysis.  Throws Failure, whose line doesn't say of which.
  void follow(const BiseamPicture (&fisheyes)[2], const BiseamPicture& panorama, std::span<const std::uint8_t> guide);

  // Guides of analyses, see biseam/panorama.h; guide: guide_size() bytes.
  std::size_t guide_size() const { return panorama_.guide_size(); }
  int guide_reach() const { return panorama_.guide_reach(); }
  void measure(const BiseamPicture (&fisheyes)[2], std::span<std::uint8_t> guide);
  void smooth(const std::vector<const void*>& guides, int index, std::span<std::uint8_t> smoothed) const;

  int history() const override { return panorama_.history(); }
  SeamPath seam_path() const override;
  SeamMap seam_map() const override;

 private:
  const Setup setup_;
  const BiseamFormat format_;
  Panorama panorama_;
  BiseamFrame frame_ = frame_defaults();
  std::vector<double> seam_;  // of the last frame, degrees
  bool has_seam_ = false;
};

}  // namespace biseam::tool
