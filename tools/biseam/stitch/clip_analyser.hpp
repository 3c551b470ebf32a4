// The pictures of a clip measured, one after the other, and what is known of them written when what comes after is known too.
#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "analysis/analysis_writer.hpp"
#include "stitch/clip_stitcher.hpp"
#include "stitch/ring_engine.hpp"

namespace biseam::tool {

// Holds the guides of about a second, however long the clip is.
class ClipAnalyser {
 public:
  // As for a ClipStitcher; mark: of the clip; writer: not begun.  Throws Failure.
  ClipAnalyser(const ClipJob& job, const KnownCamera& camera, const FramePair& first, const std::string& name,
               const Colour& colour, AVRational rate, const ClipMark& mark, AnalysisWriter& writer);

  std::uint64_t frame_bytes() const { return frame_bytes_; }  // of a pair
  std::size_t guide_bytes() const { return engine_->guide_size(); }

  // Those that aren't wanted come first; they are known, but not written.
  void measure(const FramePair& pair);
  void finish();

 private:
  struct Measured {
    std::int64_t time;
    bool is_wanted;
    std::vector<std::uint8_t> guide;
  };

  void smooth_next();

  const LensLayout layout_;
  FrameConverter converter_;
  std::optional<RingEngine> engine_;
  AnalysisWriter& writer_;
  std::uint64_t frame_bytes_ = 0;
  std::size_t reach_ = 0;
  std::deque<Measured> measured_;
  std::size_t next_ = 0;  // of them to be smoothed
  std::vector<std::uint8_t> smoothed_;
};

}  // namespace biseam::tool
