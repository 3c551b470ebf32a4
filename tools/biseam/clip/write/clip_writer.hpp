// A finished clip: encoded panoramas, everything else copied.
#pragma once

#include <string>
#include <vector>

#include "clip/read/part_reader.hpp"
#include "clip/write/clip_muxer.hpp"
#include "clip/write/encoder.hpp"
#include "clip/write/frame_sink.hpp"

namespace biseam::tool {

struct ClipWriterSettings {
  std::string path;
  EncoderSettings encoder;
  bool drop_streams = false;  // what the container can't hold
  bool spherical = true;      // 360 metadata
};

class ClipWriter : public FrameSink {
 public:
  // part: whose streams and metadata are taken over.
  // Throws Failure: output when a stream can't be held or the file not be begun, usage for the encoder's settings.
  ClipWriter(const ClipWriterSettings& settings, const ClipFacts& facts, const PartReader& part);

  void write(const AVFrame& panorama, std::int64_t time, std::int64_t duration) override;
  void copy(int clip, AVPacket& packet) override;
  void finish() override;
  std::string settings_text() const override { return encoder_.settings_text(); }

 private:
  void add_streams(const PairReader& clips);
  void add_picture(const AVStream& from);
  void add_copied(int clip, const PairReader& clips, const AVStream& from, std::int64_t offset);
  void write_encoded();

  const ClipWriterSettings settings_;
  const AVRational time_base_, rate_;
  ClipMuxer muxer_;
  Encoder encoder_;
  AVStream* picture_ = nullptr;
  std::vector<CopiedStream> copied_[2];  // by the index of the clip's stream
  Libav<AVPacket> packet_;
};

}  // namespace biseam::tool
