#pragma once

#include "biseam/panorama.hpp"
#include "stitch/engine.hpp"

namespace biseam::tool {

class RingEngine : public Engine {
 public:
  RingEngine(const Setup& setup, const EngineOptions& options, SampleKind samples);

  BiseamFormat format() const override { return format_; }
  void stitch(const BiseamPicture (&fisheyes)[2], const BiseamPicture& panorama, Seams seams) override;
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
