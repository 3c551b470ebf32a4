// Panoramas without compression, one after the other.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/replace_file.hpp"
#include "clip/read/clip_facts.hpp"
#include "clip/read/pair_reader.hpp"
#include "clip/write/frame_sink.hpp"
#include "media/frame_converter.hpp"

namespace biseam::tool {

enum class RawKind {
  nv12,  // 8 bits and 4:2:0: a plane of luma, then one of Cb, Cr pairs
  y4m    // planes of 8, 10 or 12 bits, in two bytes each where there are more than 8, the lower one first
};

struct RawWriterSettings {
  std::string path;  // "-" is standard output
  RawKind kind = RawKind::nv12;
  bool drop_streams = false;  // other streams, which raw frames can't hold
};

class RawWriter : public FrameSink {
 public:
  // What panoramas lose in the kind is told by a notice.  Throws Failure (output) when nothing can be written there, or when
  // the clips have other streams, unless those may be dropped.
  RawWriter(const RawWriterSettings& settings, const ClipFacts& facts, const PairReader& clips);

  void write(const AVFrame& panorama, std::int64_t time, std::int64_t duration) override;
  void copy(int, AVPacket&) override {}
  void finish() override;
  std::string settings_text() const override { return kind_ == RawKind::y4m ? "y4m" : "nv12"; }

 private:
  void note_time(std::int64_t time);

  RawKind kind_;
  ReplacementFile file_;
  AVPixelFormat format_;  // of what is written
  Colour colour_;         // of the panoramas
  FrameConverter converter_;
  std::vector<std::uint8_t> bytes_;  // of one frame
  AVRational base_, rate_;
  std::optional<std::int64_t> first_;
  std::int64_t last_ = 0, frames_ = 0, uneven_ = 0;  // uneven: those whose time is not what their number says
};

}  // namespace biseam::tool
