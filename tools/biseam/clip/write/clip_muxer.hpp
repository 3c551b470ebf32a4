// A clip's container while it is written: streams, metadata, and packets with times that muxers accept.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "clip/write/clip_metadata.hpp"
#include "clip/write/movie_file.hpp"
#include "clip/write/output_bytes.hpp"
#include "media/libav.hpp"

namespace biseam::tool {

// "mp4", "mov" or "matroska" by the extension; null for others.
const AVOutputFormat* clip_format(const std::string& path);

// A stream whose packets are taken over as they are.
struct CopiedStream {
  AVStream* to = nullptr;  // none: dropped
  AVRational base = {0, 1};
  std::int64_t offset = 0;             // added to times, in that base
  std::int64_t last = AV_NOPTS_VALUE;  // decoding time, in the muxer's base
  std::string text;                    // for messages
};

class ClipMuxer {
 public:
  // Throws Failure (output) when nothing can be written under the name.
  ClipMuxer(const std::string& path, const AVOutputFormat& format);

  const std::string& path() const { return path_; }
  const AVOutputFormat& format() const { return format_; }

  AVStream& add_stream();

  // With everything the stream says about itself; the container must be able to hold it.
  CopiedStream add_copied(const AVStream& from, const std::string& text);

  // The head, with a clip's metadata and its chapters inside the span.  Both throw Failure (output).
  void begin(const AVFormatContext& clip, const ClipSpan& span = {});
  void begin();

  // A packet of the clip, or of an encoder with its times in the stream's base.  Both take the packet's content and throw
  // Failure (output).
  void copy(CopiedStream& stream, AVPacket& packet);
  void put(AVPacket& packet, const std::string& stream);

  // Ends the file; false when it could not be marked as spherical though a stream is.  commit() gives it its name.  Both throw
  // Failure (output).
  bool end();
  void commit() { bytes_.commit(); }

 private:
  bool is_mov_kind() const;
  bool takes_free_keys() const;
  int movie_timescale() const;
  void mend_times(CopiedStream& stream, AVPacket& packet) const;
  std::vector<TrackAddition> track_additions() const;

  const std::string path_;
  const AVOutputFormat& format_;
  OutputBytes bytes_;
  std::unique_ptr<AVFormatContext, MuxerDelete> muxer_;
  std::optional<MovieFile> movie_;  // of MP4 and QuickTime
};

}  // namespace biseam::tool
