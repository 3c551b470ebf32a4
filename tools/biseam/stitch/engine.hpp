// What makes panoramas, behind one face: the ring engine for any camera, or the exact engine for pictures that fit it.
#pragma once

#include <memory>
#include <optional>

#include "biseam/panorama.h"
#include "biseam/stitcher.hpp"
#include "setup/setup.hpp"
#include "stitch/seams.hpp"

namespace biseam::tool {

enum class EngineKind { ring, exact };

struct EngineOptions {
  EngineKind kind = EngineKind::ring;
  BiseamQuality quality = BISEAM_QUALITY_GOOD;  // the ring engine's, as look is
  BiseamTurn look{0, 0, 0};                     // where the panorama's middle looks
  BiseamLight light = BISEAM_LIGHT_MATCH;
  std::optional<bool> near;   // bring near things together; none: where the lenses can lie apart
  bool steady_seams = false;  // where seams are searched
  int threads = 0;            // that share a frame; 0: one for each processor
};

inline bool matches_near(const Setup& setup, const EngineOptions& options) {
  return options.near.value_or(setup.may_lie_apart);
}

// What an engine has to know of the fisheye pictures' samples.
struct SampleKind {
  BiseamFormat format;
  BiseamRange range;
  BiseamTransfer transfer = BISEAM_TRANSFER_USUAL;
  double rate = 30;  // pictures a second
};

class Engine {
 public:
  virtual ~Engine() = default;

  // Of the panoramas; that of the fisheye pictures where the engine can.
  virtual BiseamFormat format() const = 0;

  // fisheyes: of the setup's sizes and the format the engine was opened for.  panorama: of the setup's width.  Throws Failure.
  virtual void stitch(const BiseamPicture (&fisheyes)[2], const BiseamPicture& panorama, Seams seams) = 0;

  // How many pictures, at most, have an effect on the next one's panorama.
  virtual int history() const { return 0; }

  // Of the last frame.
  virtual SeamPath seam_path() const = 0;
  virtual SeamMap seam_map() const = 0;
};

// Throws Failure: settings when the engine refuses the camera, system when memory is missing.
std::unique_ptr<Engine> open_engine(const Setup& setup, const EngineOptions& options, SampleKind samples);

}  // namespace biseam::tool
