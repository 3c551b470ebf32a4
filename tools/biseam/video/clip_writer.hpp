// A finished clip: encoded panoramas, everything else copied.
#pragma once

#include <memory>
#include <vector>

#include "video/encoder.hpp"
#include "video/frame_sink.hpp"
#include "video/output_bytes.hpp"
#include "video/part_reader.hpp"

namespace biseam::tool {

struct ClipWriterSettings {
  std::string path;
  EncoderSettings encoder;
  bool drop_streams = false;  // what the container can't hold
  bool spherical = true;      // 360 metadata
};

// "mp4", "mov" or "matroska" by the extension; null for others.
const AVOutputFormat* clip_format(const std::string& path);

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
  struct MuxerDelete {
    void operator()(AVFormatContext* muxer) const { avformat_free_context(muxer); }
  };
  struct Copied {
    AVStream* to = nullptr;  // none: dropped
    AVRational base = {0, 1};
    std::int64_t offset = 0;             // in that time base
    std::int64_t last = AV_NOPTS_VALUE;  // decoding time, in the muxer's base
    std::string text;
  };

  void add_streams(const PairReader& clips);
  void add_picture(const AVStream& from);
  void add_copied(int clip, const PairReader& clips, const AVStream& from, std::int64_t offset);
  void write_header(const PartReader& part);
  int movie_timescale() const;
  void complete_mov();
  void write_encoded();
  void mend_times(Copied& copied, AVPacket& packet) const;
  void put(AVPacket& packet, const std::string& stream);

  const ClipWriterSettings settings_;
  const AVRational time_base_;
  const AVOutputFormat* format_;
  OutputBytes bytes_;
  Encoder encoder_;
  std::unique_ptr<AVFormatContext, MuxerDelete> muxer_;
  AVStream* picture_ = nullptr;
  std::vector<Copied> copied_[2];  // by the index of the clip's stream
  Libav<AVPacket> packet_;
};

}  // namespace biseam::tool
