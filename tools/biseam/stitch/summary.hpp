// What came of a run.
#pragma once

#include <cstdint>
#include <string>

#include "clip/read/pair_reader.hpp"
#include "stitch/job.hpp"
#include "stitch/seams.hpp"

namespace biseam::tool {

class Summary {
 public:
  // path: of the panorama, or none where the last one was repeated.
  void count_frame(const SeamPath& path);

  std::int64_t frames() const { return frames_; }
  // Columns a frame: the mean along the seams and over all frames but the first, 0 with less than two.  In a repeated
  // frame the seams stay.
  double seam_movement() const;

 private:
  std::int64_t frames_ = 0;
  double movement_ = 0;
  SeamPath last_;
};

// All that is told of a run.
struct RunReport {
  const Summary& summary;
  double seconds;
  const PairReader& clips;
  const ClipJob& job;
  const std::string& output_kind;
  Size size;      // of the panorama
  bool searches;  // for seams
  bool near;      // things are brought together
  bool interrupted;
};

// Notices of damage and of pictures without a partner.
void tell_damage(const PairReader& clips);

// "450 frames in 20.1 s, 22.4 fps; seams move by 1.3 columns a frame"
std::string summary_line(const Summary& summary, double seconds);

// One object on one line.
std::string summary_json(const RunReport& run);

}  // namespace biseam::tool
