#pragma once

#include "picture/picture.hpp"
#include "stitch/engine.hpp"

namespace biseam::tool {

// What a host of the C interface gets.  Takes 4:2:0 of 8 bits, makes NV12.
class ExactEngine : public Engine {
 public:
  ExactEngine(const Setup& setup, BiseamFormat format);

  BiseamFormat format() const override { return BISEAM_NV12; }
  void stitch(const BiseamPicture (&fisheyes)[2], const BiseamPicture& panorama, Seams seams) override;
  SeamPath seam_path() const override;
  SeamMap seam_map() const override;

 private:
  Size size_;  // of panoramas
  Stitcher stitcher_;
  Nv12 fisheyes_[2], panorama_;  // rows without padding, as the engine is set up for
};

}  // namespace biseam::tool
