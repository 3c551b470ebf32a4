// What came of a run.
#pragma once

#include <cstdint>
#include <string>

#include "clip/read/pair_reader.hpp"
#include "stitch/seam_path.hpp"
#include "stitch/stitch_options.hpp"

namespace biseam::tool {

class Summary {
 public:
  // path: of the panorama, or none where the last one was repeated.
  void count_frame(const SeamPath& path);

  std::int64_t frames() const { return frames_; }
  double seam_movement() const;  // mean columns a frame, 0 with less than two frames

 private:
  std::int64_t frames_ = 0;
  double movement_ = 0;
  SeamPath last_;
};

// Settled values of a run, for programs that read the summary.
struct RunSettings {
  std::string sink;
  int jobs = 0;
  StitchConfig config = {};
};

// Notices of damage and of pictures without a partner.
void tell_damage(const PairReader& clips);

// "450 frames in 20.1 s, 22.4 fps; seams move by 1.3 columns a frame"
std::string summary_line(const Summary& summary, double seconds);

// One object on one line.
std::string summary_json(const Summary& summary, double seconds, const PairReader& clips, const StitchOptions& options,
                         const RunSettings& run, bool was_interrupted);

}  // namespace biseam::tool
