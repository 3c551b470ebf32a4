// From what is known of a camera and the size of its pictures to what has to be done to every pair.
#pragma once

#include <memory>
#include <string>

#include "camera/plan.hpp"
#include "camera/warp.hpp"
#include "picture/picture.hpp"

namespace biseam::tool {

struct Setup {
  Plan plan;
  int mount[2] = {0, 0};
  std::shared_ptr<const Warp> warp[2];  // none where pictures fit as they are
};

// profile: path of a camera profile, or empty; given: what replaces its values; recorded: the sizes of both pictures.
// Tells in notices what was assumed and what the pictures lack.
Setup make_setup(const std::string& profile, const profile::CameraSettings& given, const Size (&recorded)[2]);

// Brings the pictures of one lens to what the engine wants.
class LensPath {
 public:
  // threads: that share the work on a picture.
  LensPath(const Setup& setup, int index, int threads);

  // True when apply() gives every picture back as it is.
  bool is_open() const { return mount_ == 0 && !warp_; }

  // Valid until the next call, and as long as the recorded picture.
  Nv12View apply(const Nv12View& recorded);

 private:
  int mount_, threads_;
  std::shared_ptr<const Warp> warp_;
  Nv12 upright_, warped_;
};

}  // namespace biseam::tool
