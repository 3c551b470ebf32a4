// Panoramas without compression, one after the other.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/replace_file.hpp"
#include "clip/read/clip_facts.hpp"
#include "clip/read/pair_reader.hpp"
#include "clip/write/frame_sink.hpp"

namespace biseam::tool {

enum class RawKind { nv12, y4m };

struct RawWriterSettings {
  std::string path;  // "-" is standard output
  RawKind kind = RawKind::nv12;
  bool drop_streams = false;  // other streams, which raw frames can't hold
};

class RawWriter : public FrameSink {
 public:
  // Throws Failure (output) when nothing can be written there, or when the clips have other streams, unless those may be
  // dropped.
  RawWriter(const RawWriterSettings& settings, const ClipFacts& facts, const PairReader& clips);

  void write(const AVFrame& panorama, std::int64_t time, std::int64_t duration) override;
  void copy(int, AVPacket&) override {}
  void finish() override;
  std::string settings_text() const override { return kind_ == RawKind::y4m ? "y4m" : "nv12"; }

 private:
  void note_time(std::int64_t time);
  void add_rows(const AVFrame& panorama, int plane, int rows);
  void add_chroma_planes(const AVFrame& panorama);

  RawKind kind_;
  ReplacementFile file_;
  std::vector<std::uint8_t> bytes_;  // of one frame
  AVRational base_, rate_;
  std::optional<std::int64_t> first_;
  std::int64_t last_ = 0, frames_ = 0, uneven_ = 0;  // uneven: those whose time is not what their number says
};

}  // namespace biseam::tool
