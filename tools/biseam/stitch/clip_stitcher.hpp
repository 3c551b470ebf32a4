// The panoramas of a clip, one after the other.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "analysis/analysis_reader.hpp"
#include "clip/read/clip_facts.hpp"
#include "clip/read/pair_reader.hpp"
#include "clip/write/panorama_pool.hpp"
#include "media/frame_converter.hpp"
#include "picture/split.hpp"
#include "stitch/engine.hpp"
#include "stitch/job.hpp"
#include "stitch/ring_engine.hpp"

namespace biseam::tool {

struct StitchedFrame {
  FramePair pair;           // without its pictures
  Libav<AVFrame> panorama;  // none: the last one again, or only packets
  SeamPath seams;           // of the panorama
  bool is_picture = false;
};

// How the pictures of a pair become the two of the lenses.
struct LensLayout {
  Layout layout;
  std::string name;      // of the clip, for messages
  AVPixelFormat format;  // the working format of the first picture, for all
  AVChromaLocation siting;
};

// What the engine reads of a pair: views of its frames, or of what they were converted to.
class LensPictures {
 public:
  LensPictures(const FramePair& pair, const LensLayout& layout, FrameConverter& converter);

  const BiseamPicture (&get() const)[2] { return pictures_; }

 private:
  Libav<AVFrame> frames_[2];
  BiseamPicture pictures_[2];
};

LensLayout lens_layout(const ClipJob& job, const FramePair& first, const std::string& name, const Colour& colour);
SampleKind sample_kind(const BiseamPicture& lens, const Colour& colour, AVRational rate);

class ClipStitcher {
 public:
  // camera: as far as it is known; first: a pair to look at; name: of the clip, for messages; colour: of its pictures; rate: of
  // them a second, 0/1 if unknown; analysis: to follow, or null.  Throws Failure.
  ClipStitcher(const ClipJob& job, const KnownCamera& camera, const FramePair& first, const std::string& name,
               const Colour& colour, AVRational rate, AnalysisReader* analysis);

  Size size() const { return {setup_.width, setup_.width / 2}; }  // of the panoramas
  AVPixelFormat format() const { return format_; }
  std::uint64_t frame_bytes() const { return frame_bytes_; }  // of a pair and its panorama

  bool searches() const { return setup_.blend.search.value_or(true); }
  bool matches_near() const { return matches_near_; }

  StitchedFrame stitch(FramePair pair);

 private:
  bool needs_stitching(const FramePair& pair, bool searches);
  void follow_analysis(const FramePair& pair, const LensPictures& pictures, const BiseamPicture& panorama);

  const LensLayout layout_;
  FrameConverter converter_;
  const int group_size_;  // pictures that share the seams found in the first of them
  Setup setup_;
  bool matches_near_;
  AVPixelFormat format_;
  std::unique_ptr<Engine> engine_;
  AnalysisReader* analysis_;
  RingEngine* follower_ = nullptr;  // the engine, where there is an analysis
  std::optional<PanoramaPool> panoramas_;
  std::uint64_t frame_bytes_ = 0;
  std::optional<std::int64_t> group_;       // of the last picture
  std::shared_ptr<const AVFrame> last_[2];  // pictures
};

}  // namespace biseam::tool
