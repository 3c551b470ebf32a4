#pragma once

#include "biseam/biseam.h"
#include "driver/pictures.hpp"
#include "driver/serve.hpp"
#include "driver/setup.hpp"

namespace biseam::bench {

// An engine and its frame, through the C interface alone: older libraries can be measured too.
class StitchedFrame {
 public:
  explicit StitchedFrame(const Setup& setup);
  ~StitchedFrame();
  StitchedFrame(const StitchedFrame&) = delete;
  StitchedFrame& operator=(const StitchedFrame&) = delete;

  // start: memory held before, and what creating the engine, its first tables and its first frame took.  tables: building them
  // again.  frame: one more.  memory: the most held till now.  save FILE: the panorama.
  Commands commands();

  StitchEngine* engine() { return engine_; }
  Nv12& fisheye(int lens) { return fisheye_[lens]; }
  Nv12& panorama() { return panorama_; }

 private:
  using Step = int32_t (StitchedFrame::*)();
  int32_t create();
  int32_t build_tables();
  int32_t stitch();
  void measure(const char* name, Step step, Figures& figures);
  Figures measured(const char* name, Step step);
  Figures memory() const;

  StitchConfig config_;
  Nv12 fisheye_[2];
  Nv12 panorama_;
  StitchEngine* engine_ = nullptr;
  void* in_[16] = {};
  void* out_[16] = {};
  Figures start_;
};

}  // namespace biseam::bench
